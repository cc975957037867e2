// The effect road in one pass: within each strip a few rows at a time go through conversion, effect
// and conversion back while they are in the cache.
//
//   strip of the frame   rows 0, 1 --decode--> band --effect--> band --encode--> rows 0, 1
//   (one task)           rows 2, 3 --decode--> band ...
//
// The work images stay untouched: the first touch of two fresh ones takes longer than most effects.
#pragma once

#include "effect/frame_strips.h"

namespace alg {

/// Whether the frame can go in one pass: a band must read no sample that another one writes. That
/// takes even sizes, and chroma rows without gaps: the conversions walk padded ones in a way of
/// their own.
bool bandsFit(const Frame& frame);

/// Runs the effect on such a frame. Returns false, with the frame untouched, when memory is short;
/// std::bad_alloc may say so, too.
bool runBands(const char* effectName, const Frame& frame);

}  // namespace alg
