// Rows of a picture of 4-byte pixels, stretched over an image by nearest neighbour.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/block.h"

namespace alg {

enum class StretchedPixels : uint8_t {
  kPacked,         // the first three bytes of each pixel
  kPackedCrossed,  // the same in reverse
  kWhole,
};

/// Bytes of a stretched pixel.
constexpr std::size_t stretchedBytes(StretchedPixels pixels) {
  return pixels == StretchedPixels::kWhole ? 4 : 3;
}

/// How a machine picks several stretched pixels at once out of a window of a picture's row.
struct StretchWindows {
  std::size_t group = 0;            // of so many columns each; 0: it doesn't
  int pixels = 0;                   // of the picture, in a window
  uint32_t scale = 0, address = 0;  // pick = pixel in the window x scale + address
};

/// The columns of a stretched row, in whole sixteens.
struct StretchColumns {
  std::size_t count = 0;
  const uint32_t* columns = nullptr;  // of the picture, ascending
  const uint32_t* windows = nullptr;  // columns where windows begin; null where one is too narrow
  const uint32_t* picks = nullptr;    // of each column within its window
};

/// The stretched rows of pictures of one size. A row is stretched once for all image rows that meet
/// it, as long as they come one after the other. Holds memory for one row; one thread at a time.
class StretchedRows {
 public:
  /// Rows of pictureWidth pixels are packed.
  StretchedRows(int pictureWidth, int pictureHeight, int width, int height, StretchedPixels pixels);

  /// Whether there are rows: no size is below 1, and memory was not short.
  bool any() const { return stretched_ != nullptr; }

  /// The row that lies nearest to an image row, `width` pixels; valid until the next call. The
  /// picture must be the same each time.
  const uint8_t* row(const uint8_t* picture, int imageRow);

  /// Goes on to an image of another height, and perhaps another picture; both have the same width
  /// as before, and the picture its height.
  void restart(int height);

 private:
  const int pictureWidth_, pictureHeight_;
  int height_;
  const StretchedPixels pixels_;
  StretchColumns columns_;
  Block work_;  // what columns_ points at, then stretched_
  uint8_t* stretched_ = nullptr;
  int64_t stretchedRow_ = -1;  // of the picture
};

/// The windows of this machine.
StretchWindows stretchWindows();

/// Writes pixel columns[i] of a picture's row as stretched pixel i, for all columns. The vector
/// twin needs 64 bytes at `to` for each sixteen of them, whatever a stretched pixel takes.
void stretchRow(const uint8_t* pictureRow, const StretchColumns& columns, StretchedPixels pixels,
                uint8_t* to);
void stretchRowPlain(const uint8_t* pictureRow, const StretchColumns& columns,
                     StretchedPixels pixels, uint8_t* to);

}  // namespace alg
