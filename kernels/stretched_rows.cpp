#include "kernels/stretched_rows.h"

#include <algorithm>

#include "base/image_size.h"
#include "kernels/nearest_steps.h"

namespace alg {
namespace {

constexpr int kPictureBytes = 4;  // of a pixel
constexpr int kQuad = 4;          // pixels

}  // namespace

StretchedRows::StretchedRows(int pictureWidth, int pictureHeight, int width, int height,
                             StretchedPixels pixels)
    : pictureWidth_(pictureWidth),
      pictureHeight_(pictureHeight),
      width_(width),
      height_(height),
      pixels_(pixels),
      pixelBytes_(pixels == StretchedPixels::kWhole ? kPictureBytes : kPackedBytes) {
  if (width < 1 || height < 1 || pictureWidth < 1 || pictureHeight < 1) {
    return;
  }
  const std::size_t quads = (static_cast<std::size_t>(width) + kQuad - 1) / kQuad;
  const bool inQuads = pictureWidth >= kQuad && pictureWidth <= width;
  const std::size_t quadBytes = inQuads ? sizeof(StretchedQuad) * quads : 0;
  work_ = allocateBlock(quadBytes + sizeof(StretchedQuad::bytes) * quads);
  if (!work_) {
    return;
  }
  stretched_ = work_.get() + quadBytes;
  if (inQuads) {
    quads_ = reinterpret_cast<StretchedQuad*>(work_.get());
    quadCount_ = quads;
    fillQuads();
  }
}

/// From which byte of a pixel one of a stretched pixel comes.
uint8_t StretchedRows::byteOf(int channel) const {
  return static_cast<uint8_t>(pixels_ == StretchedPixels::kPackedCrossed ? 2 - channel : channel);
}

void StretchedRows::fillQuads() {
  NearestSteps column(pictureWidth_, width_);
  for (std::size_t i = 0; i < quadCount_; ++i) {
    const int first = std::min(column.index(), pictureWidth_ - kQuad);
    StretchedQuad quad = {};
    quad.offset = static_cast<uint32_t>(kPictureBytes) * static_cast<uint32_t>(first);
    for (int k = 0; k < kQuad * pixelBytes_; k += pixelBytes_, column.advance()) {
      const int pixel = std::min(column.index(), pictureWidth_ - 1) - first;
      for (int c = 0; c < pixelBytes_; ++c) {
        quad.bytes[k + c] = static_cast<uint8_t>(kPictureBytes * pixel + byteOf(c));
      }
    }
    quads_[i] = quad;
  }
}

/// Column by column; for pictures that are wider than the image or very narrow.
void StretchedRows::stretchSlowly(const uint8_t* pictureRow) const {
  NearestSteps column(pictureWidth_, width_);
  uint8_t* to = stretched_;
  for (int i = 0; i < width_; ++i, column.advance(), to += pixelBytes_) {
    const uint8_t* pixel = pictureRow + std::ptrdiff_t{kPictureBytes} * column.index();
    for (int c = 0; c < pixelBytes_; ++c) {
      to[c] = pixel[byteOf(c)];
    }
  }
}

const uint8_t* StretchedRows::row(const uint8_t* picture, int imageRow) {
  const int64_t row = int64_t{imageRow} * pictureHeight_ / height_;
  if (row != stretchedFrom_) {
    stretchedFrom_ = row;
    const uint8_t* pictureRow = picture + std::ptrdiff_t{kPictureBytes} * pictureWidth_ * row;
    if (quads_ != nullptr) {
      stretchQuads(pictureRow, quads_, quadCount_,
                   std::size_t{kQuad} * static_cast<std::size_t>(pixelBytes_), stretched_);
    } else {
      stretchSlowly(pictureRow);
    }
  }
  return stretched_;
}

void stretchQuadsPlain(const uint8_t* pictureRow, const StretchedQuad* quads, std::size_t count,
                       std::size_t step, uint8_t* to) {
  for (const StretchedQuad* quad = quads; quad != quads + count; ++quad, to += step) {
    for (std::size_t i = 0; i < step; ++i) {
      to[i] = pictureRow[quad->offset + quad->bytes[i]];
    }
  }
}

}  // namespace alg
