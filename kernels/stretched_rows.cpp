#include "kernels/stretched_rows.h"

#include <algorithm>

#include "base/image_size.h"
#include "kernels/nearest_steps.h"

namespace alg {
namespace {

constexpr std::size_t kPictureBytes = 4;  // of a pixel
constexpr std::size_t kQuad = 4;          // pixels

void fillColumns(uint32_t* columns, std::size_t count, int pictureWidth, int width) {
  NearestSteps column(pictureWidth, width);
  uint32_t* const end = columns + width;
  for (uint32_t* to = columns; to != end; ++to, column.advance()) {
    *to = static_cast<uint32_t>(column.index());
  }
  std::fill(end, columns + count, end[-1]);
}

}  // namespace

StretchedRows::StretchedRows(int pictureWidth, int pictureHeight, int width, int height,
                             StretchedPixels pixels)
    : pictureWidth_(pictureWidth),
      pictureHeight_(pictureHeight),
      height_(height),
      pixels_(pixels),
      count_((static_cast<std::size_t>(std::max(width, 0)) + kQuad - 1) / kQuad * kQuad) {
  if (width < 1 || height < 1 || pictureWidth < 1 || pictureHeight < 1) {
    return;
  }
  work_ = allocateBlock((sizeof(uint32_t) + kPictureBytes) * count_);
  if (!work_) {
    return;
  }
  columns_ = reinterpret_cast<uint32_t*>(work_.get());
  stretched_ = work_.get() + sizeof(uint32_t) * count_;
  fillColumns(columns_, count_, pictureWidth, width);
}

const uint8_t* StretchedRows::row(const uint8_t* picture, int imageRow) {
  const int64_t row = int64_t{imageRow} * pictureHeight_ / height_;
  if (row != stretchedRow_) {
    stretchedRow_ = row;
    const uint8_t* pictureRow =
        picture + static_cast<std::ptrdiff_t>(kPictureBytes) * pictureWidth_ * row;
    stretchRow(pictureRow, columns_, count_, pixels_, stretched_);
  }
  return stretched_;
}

void StretchedRows::restart(int height) {
  height_ = height;
  stretchedRow_ = -1;
}

void stretchRowPlain(const uint8_t* pictureRow, const uint32_t* columns, std::size_t count,
                     StretchedPixels pixels, uint8_t* to) {
  for (std::size_t i = 0; i < count; ++i) {
    const uint8_t* pixel = pictureRow + kPictureBytes * columns[i];
    for (std::size_t c = 0; c < stretchedBytes(pixels); ++c) {
      *to++ = pixel[pixels == StretchedPixels::kPackedCrossed ? 2 - c : c];
    }
  }
}

}  // namespace alg
