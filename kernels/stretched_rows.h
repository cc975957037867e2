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

/// Four columns of the image: they meet four neighbouring pixels at most when the picture is not
/// wider.
struct StretchedQuad {
  uint8_t bytes[16];  // from where each byte of the four stretched pixels comes
  uint32_t offset;    // in bytes, of the 16 bytes of the picture's row they come from
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

 private:
  void fillQuads();
  uint8_t byteOf(int channel) const;
  void stretchSlowly(const uint8_t* pictureRow) const;

  const int pictureWidth_, pictureHeight_, width_, height_;
  const StretchedPixels pixels_;
  const int pixelBytes_;  // of a stretched pixel
  Block work_;            // quads_, then stretched_
  StretchedQuad* quads_ = nullptr;
  std::size_t quadCount_ = 0;
  uint8_t* stretched_ = nullptr;
  int64_t stretchedFrom_ = -1;  // row of the picture
};

/// Writes the stretched pixels of each quad, `step` bytes (12 or 16) of them. The vector twin
/// writes 16 each time: the last quad has room for as many.
void stretchQuads(const uint8_t* pictureRow, const StretchedQuad* quads, std::size_t count,
                  std::size_t step, uint8_t* to);
void stretchQuadsPlain(const uint8_t* pictureRow, const StretchedQuad* quads, std::size_t count,
                       std::size_t step, uint8_t* to);

}  // namespace alg
