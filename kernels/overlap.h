// How buffers overlap, and what may be done with them then. All routines ask here.
//
// Row kernels read a block of pixels whole before they write it. They may be called for a
// destination apart from the source, at its start or before it; only one that feeds back is not
// for them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/image_size.h"

namespace alg {

/// Whether dst starts inside the source's bytes behind its first one. Results are then fed back
/// into what is still to be read, and only a walk one pixel (or byte) at a time does that right.
inline bool feedsBack(const uint8_t* src, const uint8_t* dst, std::size_t bytes) {
  const std::less<> before;  // unlike <, defined for pointers into different arrays
  return before(src, dst) && before(dst, src + bytes);
}

/// Whether two buffers share a byte.
inline bool overlap(const uint8_t* a, std::size_t aBytes, const uint8_t* b, std::size_t bBytes) {
  const std::less<> before;
  return before(a, b + bBytes) && before(b, a + aBytes);
}

/// How many packed pixels can be done at a time so that none is read after one of them was written.
inline std::size_t pixelsAtATime(const uint8_t* src, const uint8_t* dst, std::size_t pixels) {
  if (feedsBack(src, dst, kPackedBytes * pixels)) {
    return std::max(static_cast<std::size_t>(dst - src) / kPackedBytes, std::size_t{1});
  }
  return pixels;
}

/// Cuts the rows of packed images into pieces that row kernels may do, in memory order, and calls
/// work(src, dst, row, first column, pixels) for each, src and dst being where the piece begins.
template <class Work>
void forEachPiece(const uint8_t* src, uint8_t* dst, int width, int height, Work work) {
  const auto columns = static_cast<std::size_t>(width);
  const std::size_t most = pixelsAtATime(src, dst, columns * static_cast<std::size_t>(height));
  for (int row = 0; row < height; ++row) {
    for (std::size_t x = 0; x < columns;) {
      const std::size_t pixels = std::min(most, columns - x);
      work(src, dst, row, x, pixels);
      x += pixels;
      src += kPackedBytes * pixels;
      dst += kPackedBytes * pixels;
    }
  }
}

}  // namespace alg
