#include "effect/pipeline.h"

#include <mutex>
#include <new>

#include "effect/bands.h"
#include "effect/phases.h"

namespace alg {
namespace {

/// Lets one run at a time in: the work images, the picture and the pool are single instances. At
/// the end of the process it waits for the run under way, which still reads the picture; recursive,
/// because the pool may end the process from within a run.
struct RunLock {
  std::recursive_mutex mutex;
  RunLock() = default;
  ~RunLock() { mutex.lock(); }
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;
};

}  // namespace

bool runEffect(const char* effectName, const Frame& frame, Road road) {
  if (frame.width < 1 || frame.height < 1) {
    return true;
  }
  static RunLock runLock;
  const std::lock_guard lock(runLock.mutex);
  try {
    const bool inBands = road == Road::kFastest && bandsFit(frame);
    return (inBands ? runBands : runPhases)(effectName, frame);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace alg

void KAVRO_PrettyEffect_Function(const char* effectName, const char* /*format*/, uint8_t* y,
                                 uint8_t* uv, int height, int width, int yStride, int uvStride) {
  alg::runEffect(effectName, {y, uv, width, height, yStride, uvStride});
}
