// Row kernels of the conversions to pixels. Sources and destinations must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convert/row_format.h"

namespace alg {

/// Decodes `width` luma bytes and ceil(width / 2) chroma pairs to `width` pixels.
void decodeRow(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
               std::size_t width);
void decodeRowPlain(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                    std::size_t width);

/// Decodes the two rows that share a row of chroma pairs, for little more than half the arithmetic
/// of two single ones. The second row starts one stride (in bytes) after the first. With `stream`
/// words go past the caches; hwy::FlushStream() then has to follow the last pair.
void decodeRowPair(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                   const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                   std::size_t width, bool stream = false);
void decodeRowPairPlain(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                        const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                        std::size_t width, bool stream = false);

/// Whether two rows at a time are faster for so many bytes of pixels. Where memory bandwidth is the
/// limit, as on desktop machines, the saved arithmetic does not pay: two streams of stores are
/// slower than one. It does pay for what stays in the cache, and for what goes past it (`stream`).
constexpr bool decodesInPairs([[maybe_unused]] std::size_t bytes,
                              [[maybe_unused]] bool stream = false) {
#if defined(__aarch64__)
  return true;
#else
  return stream || bytes <= std::size_t{64} * 1024;
#endif
}

}  // namespace alg
