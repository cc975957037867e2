#include "kernels/stretched_rows.h"

#include <algorithm>

#include "base/image_size.h"
#include "kernels/nearest_steps.h"

namespace alg {
namespace {

constexpr std::size_t kPictureBytes = 4;  // of a pixel
constexpr std::size_t kSixteen = 16;      // pixels

void fillColumns(uint32_t* columns, std::size_t count, int pictureWidth, int width) {
  NearestSteps column(pictureWidth, width);
  uint32_t* const end = columns + width;
  for (uint32_t* to = columns; to != end; ++to, column.advance()) {
    *to = static_cast<uint32_t>(column.index());
  }
  std::fill(end, columns + count, end[-1]);
}

/// Windows stay inside the picture's row. Returns whether each holds its group.
bool fillWindows(const StretchWindows& shape, const uint32_t* columns, std::size_t count,
                 int pictureWidth, uint32_t* windows, uint32_t* picks) {
  if (shape.group == 0 || pictureWidth < shape.pixels) {
    return false;
  }
  const auto last = static_cast<uint32_t>(pictureWidth - shape.pixels);
  for (std::size_t i = 0; i < count; i += shape.group) {
    const uint32_t begin = std::min(columns[i], last);
    if (columns[i + shape.group - 1] - begin >= static_cast<uint32_t>(shape.pixels)) {
      return false;
    }
    *windows++ = begin;
    for (std::size_t k = i; k < i + shape.group; ++k) {
      picks[k] = (columns[k] - begin) * shape.scale + shape.address;
    }
  }
  return true;
}

}  // namespace

StretchedRows::StretchedRows(int pictureWidth, int pictureHeight, int width, int height,
                             StretchedPixels pixels)
    : pictureWidth_(pictureWidth), pictureHeight_(pictureHeight), height_(height), pixels_(pixels) {
  if (width < 1 || height < 1 || pictureWidth < 1 || pictureHeight < 1) {
    return;
  }
  const std::size_t count = (static_cast<std::size_t>(width) + kSixteen - 1) / kSixteen * kSixteen;
  work_ = allocateBlock((3 * sizeof(uint32_t) + kPictureBytes) * count);
  if (!work_) {
    return;
  }
  auto* const columns = reinterpret_cast<uint32_t*>(work_.get());
  uint32_t* const picks = columns + count;
  uint32_t* const windows = picks + count;
  stretched_ = reinterpret_cast<uint8_t*>(windows + count);
  fillColumns(columns, count, pictureWidth, width);
  const bool fit = fillWindows(stretchWindows(), columns, count, pictureWidth, windows, picks);
  columns_ = {
      .count = count, .columns = columns, .windows = fit ? windows : nullptr, .picks = picks};
}

const uint8_t* StretchedRows::row(const uint8_t* picture, int imageRow) {
  const int64_t row = int64_t{imageRow} * pictureHeight_ / height_;
  if (row != stretchedRow_) {
    stretchedRow_ = row;
    const uint8_t* pictureRow =
        picture + static_cast<std::ptrdiff_t>(kPictureBytes) * pictureWidth_ * row;
    stretchRow(pictureRow, columns_, pixels_, stretched_);
  }
  return stretched_;
}

void StretchedRows::restart(int height) {
  height_ = height;
  stretchedRow_ = -1;
}

void stretchRowPlain(const uint8_t* pictureRow, const StretchColumns& columns,
                     StretchedPixels pixels, uint8_t* to) {
  for (std::size_t i = 0; i < columns.count; ++i) {
    const uint8_t* pixel = pictureRow + kPictureBytes * columns.columns[i];
    for (std::size_t c = 0; c < stretchedBytes(pixels); ++c) {
      *to++ = pixel[pixels == StretchedPixels::kPackedCrossed ? 2 - c : c];
    }
  }
}

}  // namespace alg
