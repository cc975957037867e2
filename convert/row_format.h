// The layouts that the row kernels of the conversions know.
#pragma once

#include <cstddef>

namespace alg {

/// Pixel and chroma layout of a conversion.
enum class RowFormat {
  kArgbUV,    ///< B, G, R, A pixels; U, V pairs (NV12)
  kArgbVU,    ///< B, G, R, A pixels; V, U pairs (NV21)
  kRgbaUV,    ///< R, G, B, A pixels; U, V pairs
  kRgbaVU,    ///< R, G, B, A pixels; V, U pairs
  kPackedUV,  ///< decodes to B, G, R and encodes from R, G, B; U, V pairs
};

/// Whether V comes first in a pair.
constexpr bool hasVFirst(RowFormat format) {
  return format == RowFormat::kArgbVU || format == RowFormat::kRgbaVU;
}

/// Whether decoded pixels begin with red.
constexpr bool hasRedFirst(RowFormat format) {
  return format == RowFormat::kRgbaUV || format == RowFormat::kRgbaVU;
}

/// Whether pixels to be encoded do.
constexpr bool encodesRedFirst(RowFormat format) {
  return format == RowFormat::kPackedUV || hasRedFirst(format);
}

/// Bytes of a pixel in the format.
constexpr std::size_t pixelBytes(RowFormat format) {
  return format == RowFormat::kPackedUV ? 3 : 4;
}

}  // namespace alg
