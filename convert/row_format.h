// The layouts that the row kernels of the conversions know.
#pragma once

#include <cstddef>

namespace alg {

/// Pixel and chroma layout of a conversion.
enum class RowFormat {
  kArgbUV,    ///< B, G, R, A pixels; U, V pairs (NV12)
  kArgbVU,    ///< B, G, R, A pixels; V, U pairs (NV21)
  kPackedUV,  ///< decodes to B, G, R and encodes from R, G, B; U, V pairs
};

/// Bytes of a pixel in the format.
constexpr std::size_t pixelBytes(RowFormat format) {
  return format == RowFormat::kPackedUV ? 3 : 4;
}

}  // namespace alg
