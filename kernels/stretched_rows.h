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
  const std::size_t count_;  // of columns, in whole quads
  Block work_;               // columns_, then stretched_
  uint32_t* columns_ = nullptr;
  uint8_t* stretched_ = nullptr;
  int64_t stretchedRow_ = -1;  // of the picture
};

/// Writes pixel columns[i] of a picture's row as stretched pixel i, for i < count.
/// The vector twin takes quads: columns go on to a multiple of four, and `to` has 16 bytes for each
/// four of them, whatever a stretched pixel takes.
void stretchRow(const uint8_t* pictureRow, const uint32_t* columns, std::size_t count,
                StretchedPixels pixels, uint8_t* to);
void stretchRowPlain(const uint8_t* pictureRow, const uint32_t* columns, std::size_t count,
                     StretchedPixels pixels, uint8_t* to);

}  // namespace alg
