// The effect pipeline for callers inside the library, who get a result.
#pragma once

#include <cstdint>

#include "effect/chosen_effect.h"
#include "effect/frame_strips.h"

namespace alg {

enum class Passes : uint8_t {
  kFewest,  ///< one where the frame allows it
  kThree    ///< the definition: three phases over the whole frame
};

/// What happened to a frame.
enum class Outcome : uint8_t {
  kDone,       ///< the effect is on it, or it passed through under a name without one
  kNoPicture,  ///< it passed through: the effect's picture is missing
  kNoMemory    ///< it is untouched
};

/// Runs an effect on the frame, in place. Runs queue up behind one process-wide lock; when the pool
/// can't start, the run does its strips on the calling thread. A frame that goes through the work
/// images gets kNoMemory when one of them would exceed 2^31 - 1 bytes. A size below 1 does nothing.
Outcome runEffect(const EffectRequest& request, const Frame& frame,
                  Passes passes = Passes::kFewest);

}  // namespace alg
