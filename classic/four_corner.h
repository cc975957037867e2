// The walk of the radial effects: what depends on the distance from the centre is worked out once
// for a pixel and its three mirror images about the centre lines.
//
//     (y, x)  0 . . . . . 2      0..3: the order of the writes in one step
//             . . . . . . .
//             1 . . . . . 3
//
// Steps go down the rows and along the columns, to the middle row and column inclusive. Where these
// meet their own images, pixels are written again and the last write stands: with an even width or
// height both middle columns or rows end with the terms of offset 0.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/image_size.h"

namespace alg {

/// Columns whose terms are worked out together, ahead of their pixels: a loop of plain sums and
/// products that compilers turn into vectors.
inline constexpr int kCornerRun = 256;

/// Byte offsets of a pixel and its mirror images, in the order of the writes.
using Corners = std::array<std::size_t, 4>;

/// The images of pixels in a packed picture of 3 bytes a pixel.
class Mirrors {
 public:
  Mirrors(int width, int height)
      : lastX(kPackedBytes * (static_cast<std::size_t>(width) - 1)),
        rowBytes(lastX + kPackedBytes),
        lastRow(rowBytes * (static_cast<std::size_t>(height) - 1)) {}

  /// The pixel must be inside; then its images are, too.
  Corners of(int y, int x) const {
    const std::size_t row = rowBytes * static_cast<std::size_t>(y);
    const std::size_t column = kPackedBytes * static_cast<std::size_t>(x);
    return {row + column, lastRow - row + column, row + lastX - column,
            lastRow - row + lastX - column};
  }

 private:
  std::size_t lastX;  // of a row's last pixel
  std::size_t rowBytes;
  std::size_t lastRow;  // of the last row
};

/// Walks an image of at least 1 x 1. For each run of columns `prepare(dy, dx, count)` is called
/// with the offsets of its first pixel from the centre, rows and columns of 0 or less, then
/// `step(i, corners)` for each i below count.
template <class Prepare, class Step>
void walkFourCorners(int width, int height, Prepare prepare, Step step) {
  const Mirrors mirrors(width, height);
  const int middleX = width >> 1;
  const int middleY = height >> 1;
  for (int y = 0; y <= middleY; ++y) {
    for (int x = 0; x <= middleX; x += kCornerRun) {
      const int count = std::min(kCornerRun, middleX - x + 1);
      prepare(y - middleY, x - middleX, count);
      for (int i = 0; i < count; ++i) {
        step(i, mirrors.of(y, x + i));
      }
    }
  }
}

}  // namespace alg
