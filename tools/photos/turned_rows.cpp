#include "tools/photos/turned_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/image_size.h"
#include "images/pixel_rows.h"
#include "platform/large_block.h"

namespace alg::tool {
namespace {

/// Sides of what is turned at a time, in the first-level cache, before it is packed.
constexpr int kTileWidth = 64;
constexpr int kTileHeight = 32;

}  // namespace

bool TurnedRows::begin(int& width, int& height, JpegPixels pixels) {
  pixels_ = pixels;
  sourceWidth_ = width;
  sourceHeight_ = height;
  if (isOnItsSide(orientation_)) {
    std::swap(width, height);
  }
  width_ = width;
  picture_ = allocateLargeBlock(pixelCount(width, height) * kPackedBytes);
  return picture_ != nullptr;
}

uint8_t* TurnedRows::at(int x, int y) const {
  return picture_.get() + (pixelCount(width_, y) + static_cast<std::size_t>(x)) * kPackedBytes;
}

void TurnedRows::put(const uint8_t* rows, int count) {
  const std::ptrdiff_t pitch = std::ptrdiff_t{kArgbBytes} * sourceWidth_;
  for (int y = 0; y < count; y += kTileHeight) {
    for (int x = 0; x < sourceWidth_; x += kTileWidth) {
      putTile({rows + y * pitch + std::ptrdiff_t{kArgbBytes} * x, pitch},
              {x, taken_ + y, std::min(kTileWidth, sourceWidth_ - x),
               std::min(kTileHeight, count - y)});
    }
  }
  taken_ += count;
}

void TurnedRows::putTile(Rows<const uint8_t> src, const Part& part) {
  uint8_t tile[kTileWidth * kTileHeight * kArgbBytes];
  const bool onItsSide = isOnItsSide(orientation_);
  const int width = onItsSide ? part.height : part.width;
  const int height = onItsSide ? part.width : part.height;
  const Rows<uint8_t> turned{tile, std::ptrdiff_t{kArgbBytes} * width};
  turnUpright(orientation_, src, turned, part.width, part.height);
  const Place place = placeUpright(orientation_, part, sourceWidth_, sourceHeight_);
  for (int row = 0; row < height; ++row) {
    packRow(turned.row(row), at(place.x, place.y + row), static_cast<std::size_t>(width),
            ByteOrder::kKept);
  }
}

void TurnedRows::get(uint8_t* rows, int count) {
  const std::size_t pixels = pixelCount(width_, count);
  const uint8_t* const from = at(0, std::exchange(given_, given_ + count));
  if (bytesPerPixel(pixels_) < kArgbBytes) {
    std::memcpy(rows, from, pixels * kPackedBytes);
  } else {
    std::memset(rows, 255, pixels * kArgbBytes);
    unpackRow(from, rows, rows, pixels, ByteOrder::kKept);
  }
}

}  // namespace alg::tool
