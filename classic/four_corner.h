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

/// Columns whose terms are worked out together, ahead of their pixels. Long runs suit memory.
inline constexpr int kCornerRun = 2048;

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

/// Neighbouring pixels of a row. Their images on the right begin behind the last of them, so that
/// runs may be written in any order of columns; only the middle column, a run of its own, may meet
/// its image.
struct CornerRun {
  int y, x, count;
  int dy, dx;  // the first pixel's offsets from the centre: 0 or less
};

/// Walks an image of at least 1 x 1 run by run.
template <class Run>
void walkCornerRuns(int width, int height, Run run) {
  const int middleX = width >> 1;
  const int middleY = height >> 1;
  for (int y = 0; y <= middleY; ++y) {
    for (int x = 0; x < middleX; x += kCornerRun) {
      run(CornerRun{.y = y,
                    .x = x,
                    .count = std::min(kCornerRun, middleX - x),
                    .dy = y - middleY,
                    .dx = x - middleX});
    }
    run(CornerRun{.y = y, .x = middleX, .count = 1, .dy = y - middleY, .dx = 0});
  }
}

/// The same pixel by pixel: for each run `prepare(dy, dx, count)` is called, then
/// `step(i, corners)` for each i below count.
template <class Prepare, class Step>
void walkFourCorners(int width, int height, Prepare prepare, Step step) {
  const Mirrors mirrors(width, height);
  walkCornerRuns(width, height, [&](const CornerRun& run) {
    prepare(run.dy, run.dx, run.count);
    for (int i = 0; i < run.count; ++i) {
      step(i, mirrors.of(run.y, run.x + i));
    }
  });
}

}  // namespace alg
