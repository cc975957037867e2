// The effect pipeline in three phases over the whole frame, through the two work images.
#pragma once

#include "effect/chosen_effect.h"
#include "effect/frame_strips.h"

namespace alg {

/// Runs the effect on any frame with sizes of at least 1; the work images are there. It is looked
/// up when the frame has been decoded. Returns false, with the frame untouched, when memory is
/// short; std::bad_alloc may say so, too.
/// @param lacksPicture  set when the frame passes through because a picture is missing
bool runPhases(const EffectRequest& request, const Frame& frame, bool& lacksPicture);

}  // namespace alg
