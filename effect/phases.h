// The effect pipeline in three phases over the whole frame, through the two work images.
#pragma once

#include "effect/chosen_effect.h"
#include "effect/frame_strips.h"

namespace alg {

/// Runs the effect on any frame with sizes of at least 1; the work images must be allocated. The
/// effect is looked up after the frame has been decoded. When memory is short, returns false or
/// throws std::bad_alloc, with the frame untouched.
/// @param lacksPicture  set when the frame passes through because a picture is missing
bool runPhases(const EffectRequest& request, const Frame& frame, bool& lacksPicture);

}  // namespace alg
