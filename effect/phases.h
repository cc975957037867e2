// The effect road in three phases over the whole frame, through the two work images.
#pragma once

#include "effect/frame_strips.h"

namespace alg {

/// Runs the effect on any frame with sizes of at least 1. Returns false, with the frame untouched,
/// when the work images don't fit into 2^31 - 1 bytes or memory, or the pool can't start. May throw
/// std::bad_alloc, likewise with the frame untouched and the work images gone.
bool runPhases(const char* effectName, const Frame& frame);

}  // namespace alg
