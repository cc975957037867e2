// Row kernels of the YUV conversions: one or two rows of pixels at a time, no image logic.
#pragma once

#include <cstddef>
#include <cstdint>

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

// Sources and destinations of the kernels must not overlap.

/// Decodes `width` luma bytes and ceil(width / 2) chroma pairs to `width` pixels.
void decodeRow(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
               std::size_t width);
void decodeRowPlain(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                    std::size_t width);

/// Decodes the two rows that share a row of chroma pairs, for little more than half the arithmetic
/// of two single ones. The second row starts one stride (in bytes) after the first.
void decodeRowPair(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                   const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                   std::size_t width);

/// Encodes the luma of `width` pixels.
void encodeLumaRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width);
void encodeLumaRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width);

/// Encodes ceil(width / 2) chroma pairs from the pixels in even columns.
void encodeChromaRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* chroma,
                          std::size_t width);

/// Encodes both the luma and the chroma pairs of a row in one pass.
void encodeRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
               std::size_t width);

}  // namespace alg
