// The adapter to the face-beauty engine: levels to a mode and a configuration, a frame to an image
// record, and one engine for each frame.
#pragma once

#include <cstdint>

#include "sfb/engine_interface.h"

namespace alg {

/// Where the device has the engine.
inline constexpr char kSfbLibrary[] = "/system/lib64/libSFB.so";

/// Result when there is no engine to call.
inline constexpr int kSfbNotLoaded = -100;

/// Result when the engine threw an exception.
inline constexpr int kSfbThrew = -101;

struct SfbLevels {
  int32_t mode;  ///< 0: do nothing, 1: the engine's default levels, 2: those that follow
  int32_t smooth;
  int32_t toning;
  int32_t slimming;
};

/// The levels of a caller with their mode: 0 for none at all, 1 for just the defaults, else 2.
SfbLevels sfbLevels(int smooth, int toning, int slimming);

/// Describes a frame at `data` whose planes follow each other.
/// @param format     kGtTwoPlanes or kGtThreePlanes; any other is logged and gets plane 0 alone
/// @param pitch      bytes per row of plane 0, and of plane 1 when there are two
/// @param planeRows  rows of plane 0 before plane 1, when there are two
void vfb_init_gtimage(GtImage* image, uint32_t format, int width, int height, int pitch,
                      int planeRows, uint8_t* data);

/// Beautifies the frame in place. Returns 0, the engine's error code, or kSfbNotLoaded when the
/// library, its factory or an engine can't be had (the next call then tries again), or kSfbThrew.
/// Thread-safe: the engine library gets one call at a time, further callers wait. Null levels do
/// nothing.
int SFBProcess(GtImage* image, const SfbLevels* levels);

/// What a run with an engine of the caller's choice came to.
struct SfbRun {
  int result = 0;  ///< as of SFBProcess()
  const char* whyNotLoaded =
      nullptr;  ///< set when there is no engine; until this thread's next run
};

/// SFBProcess() with the engine library at `path` of this machine in place of the device's, which
/// it loads in each call.
SfbRun processWithEngineOfHost(const char* path, GtImage* image, const SfbLevels& levels);

/// A tenth of the levels that mode 2 was last called with, towards zero. For SFBProcess() alone to
/// write, and only while it has the engine to itself.
struct SfbTenths {
  int32_t smooth, toning, slimming;
};
extern SfbTenths sfbTenths;

}  // namespace alg
