// The adapter to the face-beauty engine: it turns levels into a mode and a configuration and a
// frame into an image record, and makes one engine for each frame.
#pragma once

#include <cstdint>

#include "sfb/engine_interface.h"

namespace alg {

/// The engine's path on the device.
inline constexpr char kSfbLibrary[] = "/system/lib64/libSFB.so";

/// Result when there is no engine to call.
inline constexpr int kSfbNotLoaded = -100;

/// Result when the engine threw an exception.
inline constexpr int kSfbThrew = -101;

struct SfbLevels {
  int32_t mode;  ///< 0: do nothing, 1: the engine's default levels, 2: the levels that follow
  int32_t smooth;
  int32_t toning;
  int32_t slimming;
};

/// A caller's levels and their mode: 0 when all are 0, 1 for exactly the defaults, otherwise 2.
SfbLevels sfbLevels(int smooth, int toning, int slimming);

/// Describes a frame at `data` whose planes follow each other.
/// @param format     kGtTwoPlanes or kGtThreePlanes; any other is logged and gets plane 0 alone
/// @param pitch      bytes per row of plane 0, and of plane 1 when there are two
/// @param planeRows  rows of plane 0 before plane 1, when there are two
void vfb_init_gtimage(GtImage* image, uint32_t format, int width, int height, int pitch,
                      int planeRows, uint8_t* data);

/// Beautifies the frame in place. Returns 0, the engine's error code, kSfbNotLoaded when the
/// library can't be loaded, has no factory or makes no engine (the next call then tries again), or
/// kSfbThrew. Thread-safe: the engine library gets one call at a time, and further callers wait.
/// Null levels do nothing.
int SFBProcess(GtImage* image, const SfbLevels* levels);

/// What a run with an engine of the caller's choice came to.
struct SfbRun {
  int result = 0;  ///< as of SFBProcess()
  /// Set when there is no engine; valid until this thread's next run.
  const char* whyNotLoaded = nullptr;
};

/// SFBProcess() with the engine library at `path` of this machine in place of the device's, which
/// it loads in each call.
SfbRun processWithEngineOfHost(const char* path, GtImage* image, const SfbLevels& levels);

/// A tenth of the levels that mode 2 was last called with, rounded towards zero. Written by
/// SFBProcess() only, while it holds the engine's lock.
struct SfbTenths {
  int32_t smooth, toning, slimming;
};
extern SfbTenths sfbTenths;

}  // namespace alg
