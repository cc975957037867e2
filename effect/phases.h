// The effect road in three phases over the whole frame, through the two work images.
#pragma once

#include "effect/frame_strips.h"

namespace alg {

/// Runs the effect on any frame with sizes of at least 1; the work images are there. Returns false,
/// with the frame untouched, when memory is short; std::bad_alloc may say so, too.
bool runPhases(const char* effectName, const Frame& frame);

}  // namespace alg
