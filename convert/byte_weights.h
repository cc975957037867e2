// The factors of the encoding kernels, for their file alone.
#pragma once

#include <cstdint>

#include "convert/bt601.h"
#include "convert/row_format.h"

namespace alg {

/// The factors of a pixel's bytes, in the order in which the format keeps them.
struct ByteWeights {
  int32_t first, middle, last;
};

// Of a static function g++ makes less code.
static constexpr ByteWeights byteWeights(RowFormat format, const bt601::Weights& w) {
  return encodesRedFirst(format) ? ByteWeights{w.red, w.green, w.blue}
                                 : ByteWeights{w.blue, w.green, w.red};
}

}  // namespace alg
