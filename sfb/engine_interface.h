// The records that the closed face-beauty engine takes, and how it is called. The layouts are the
// engine's: little-endian, 64-bit pointers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

static_assert(sizeof(void*) == 8, "the engine exists for 64-bit processes only");

/// Format codes of an image record.
inline constexpr uint32_t kGtTwoPlanes = 0x30100002;    ///< luma, interleaved chroma at half height
inline constexpr uint32_t kGtThreePlanes = 0x30200001;  ///< luma, two quarter-size chroma planes

struct GtPlane {
  uint32_t pitch;  ///< bytes per row
  uint32_t reserved;
  uint8_t* address;
};

/// Image record.
struct GtImage {
  uint32_t format;
  uint32_t width;   ///< pixels
  uint32_t height;  ///< rows
  uint32_t reserved;
  GtPlane plane[4];  ///< the last one is not used
};

static_assert(offsetof(GtPlane, pitch) == 0 && offsetof(GtPlane, reserved) == 4 &&
              offsetof(GtPlane, address) == 8 && sizeof(GtPlane) == 16);
static_assert(offsetof(GtImage, format) == 0 && offsetof(GtImage, width) == 4 &&
              offsetof(GtImage, height) == 8 && offsetof(GtImage, reserved) == 12 &&
              offsetof(GtImage, plane) == 16 && sizeof(GtImage) == 80);

/// Levels as the engine works with them.
struct SfbLevelBlock {
  int32_t zero;
  uint8_t smooth;
  uint8_t toning;
  uint8_t slimming;
  uint8_t ee;  ///< 0
  uint8_t ec;  ///< 0
  uint8_t unused[3];
};

static_assert(offsetof(SfbLevelBlock, zero) == 0 && offsetof(SfbLevelBlock, smooth) == 4 &&
              offsetof(SfbLevelBlock, toning) == 5 && offsetof(SfbLevelBlock, slimming) == 6 &&
              offsetof(SfbLevelBlock, ee) == 7 && offsetof(SfbLevelBlock, ec) == 8);

struct SfbConfiguration {
  uint8_t smooth;
  uint8_t toning;
  uint8_t sl;  ///< 100
  uint8_t sc;  ///< 100
  int32_t one;
  const SfbLevelBlock* levels;
};

static_assert(offsetof(SfbConfiguration, smooth) == 0 && offsetof(SfbConfiguration, toning) == 1 &&
              offsetof(SfbConfiguration, sl) == 2 && offsetof(SfbConfiguration, sc) == 3 &&
              offsetof(SfbConfiguration, one) == 4 && offsetof(SfbConfiguration, levels) == 8 &&
              sizeof(SfbConfiguration) == 16);

struct SfbOperations;

/// An engine: its first word points at the table of its operations.
struct SfbEngine {
  const SfbOperations* operations;
};

struct SfbOperations {
  void (*release)(SfbEngine*);  ///< destroys the engine
  int (*setConfiguration)(SfbEngine*, const SfbConfiguration*);
  void (*unused)();
  int (*process)(SfbEngine*, int mode, GtImage*, int64_t, int64_t);  ///< 0 or an error code
};

static_assert(offsetof(SfbOperations, release) == 0 &&
              offsetof(SfbOperations, setConfiguration) == 8 &&
              offsetof(SfbOperations, process) == 24);

/// The engine library's factory; 0, with an engine stored, or an error code.
using VfbEngineCreate = int(int width, int height, uint32_t format, int always8, SfbEngine** out);

}  // namespace alg
