// The effect pipeline in one pass: a few rows at a time go through conversion, effect and
// conversion back while they are in the cache.
//
//   piece of a strip   rows 0, 1 --decode--> band --effect--> band --encode--> rows 0, 1
//   (one task)         rows 2, 3 --decode--> band ...
//
// Each task takes the next piece that none has taken yet, whichever strip it belongs to.
// The work images stay untouched: the first touch of two fresh ones takes longer than most effects.
#pragma once

#include "effect/chosen_effect.h"
#include "effect/frame_strips.h"

namespace alg {

/// Whether the frame can be processed in one pass: no band may read a sample that another band
/// writes. That requires even sizes and unpadded chroma rows: with padding, the conversions' chroma
/// cursor does not land on the start of the next row, unless the frame is meant to have true
/// padding.
bool bandsFit(const Frame& frame, bool truePadding = false);

/// Runs the effect on such a frame. The effect must have independent rows (Bands::kAny). When
/// memory is short, returns false or throws std::bad_alloc, with the frame untouched.
bool runBands(const ChosenEffect& effect, const Frame& frame);

}  // namespace alg
