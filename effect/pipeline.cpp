#include "effect/pipeline.h"

#include <mutex>
#include <new>

#include "effect/bands.h"
#include "effect/phases.h"
#include "effect/work_images.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

/// Returns false, with the frame untouched, when memory is short.
bool run(const EffectRequest& request, const Frame& frame, Passes passes, const WorkImages& images,
         bool& lacksPicture) {
  if (passes == Passes::kFewest && bandsFit(frame, request.truePadding)) {
    const ChosenEffect effect(request, frame.width, frame.height);
    lacksPicture = effect.lacksPicture();
    return (lacksPicture && request.needsPicture) || runBands(effect, frame);
  }
  return images.ready() && runPhases(request, frame, lacksPicture);
}

}  // namespace

Outcome runEffect(const EffectRequest& request, const Frame& frame, Passes passes) {
  if (frame.width < 1 || frame.height < 1) {
    return Outcome::kDone;
  }
  // One run at a time: the work images, the picture and the pool are single instances.
  const std::lock_guard lock(poolLock());
  const WorkImages images(frame.width, frame.height);
  bool lacksPicture = false;
  try {
    if (!run(request, frame, passes, images, lacksPicture)) {
      return Outcome::kNoMemory;
    }
  } catch (const std::bad_alloc&) {
    return Outcome::kNoMemory;
  }
  return lacksPicture ? Outcome::kNoPicture : Outcome::kDone;
}

}  // namespace alg
