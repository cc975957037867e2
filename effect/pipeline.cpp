#include "effect/pipeline.h"

#include <mutex>
#include <new>

#include "effect/bands.h"
#include "effect/phases.h"
#include "effect/work_images.h"
#include "threadpool/global_pool.h"

namespace alg {

bool runEffect(const char* effectName, const Frame& frame, Road road) {
  if (frame.width < 1 || frame.height < 1) {
    return true;
  }
  // One run at a time: the work images, the picture and the pool are single instances.
  const std::lock_guard lock(poolMutex());
  const WorkImages images(frame.width, frame.height);
  try {
    if (road == Road::kFastest && bandsFit(frame)) {
      return runBands(effectName, frame);
    }
    return images.ready() && runPhases(effectName, frame);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace alg

void KAVRO_PrettyEffect_Function(const char* effectName, const char* /*format*/, uint8_t* y,
                                 uint8_t* uv, int height, int width, int yStride, int uvStride) {
  alg::runEffect(effectName, {y, uv, width, height, yStride, uvStride});
}
