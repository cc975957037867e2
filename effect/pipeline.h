// The effect road, with an answer for callers inside the library.
#pragma once

#include "effect/frame_strips.h"

namespace alg {

enum class Road : uint8_t {
  kFastest,  ///< in one pass where the frame allows it
  kPhases    ///< the definition: three phases over the whole frame
};

/// Runs the named effect on the frame, in place. Runs queue up behind one process-wide lock; when
/// the pool can't start, the run does its strips on the calling thread. Returns false, with the
/// frame untouched, when memory is short, or when a frame that goes through the work images has
/// larger ones than 2^31 - 1 bytes. A size below 1 does nothing.
bool runEffect(const char* effectName, const Frame& frame, Road road = Road::kFastest);

}  // namespace alg
