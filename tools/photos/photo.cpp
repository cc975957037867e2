#include "tools/photos/photo.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "base/image_size.h"
#include "camerautil/turn_rows.h"
#include "tools/shell/console.h"

namespace alg::tool {

namespace {

template <class Byte>
Rows<Byte> upwards(Rows<Byte> rows, int height) {
  return {rows.row(height - 1), -rows.pitch};
}

bool lastRowFirst(int orientation) {
  return orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
}

bool lastColumnFirst(int orientation) {
  return orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
}

}  // namespace

///   1     2     3     4     5     6     7     8
///   ab    ba    dc    cd    ac    ca    db    bd      where a photo "ab" of that orientation
///   cd    dc    ba    ab    bd    db    ca    ac                    "cd" ends up
void turnUpright(int orientation, Rows<const uint8_t> src, Rows<uint8_t> dst, int width,
                 int height) {
  if (isOnItsSide(orientation)) {
    transpose(kArgbBytes, lastRowFirst(orientation) ? upwards(src, height) : src,
              lastColumnFirst(orientation) ? upwards(dst, width) : dst, width, height);
    return;
  }
  const Rows<uint8_t> to = lastRowFirst(orientation) ? upwards(dst, height) : dst;
  const auto pixels = static_cast<std::size_t>(width);
  for (int y = 0; y < height; ++y) {
    if (lastColumnFirst(orientation)) {
      mirror(kArgbBytes, src.row(y), to.row(y), pixels);
    } else {
      std::memcpy(to.row(y), src.row(y), pixels * kArgbBytes);
    }
  }
}

Place placeUpright(int orientation, const Part& part, int allWidth, int allHeight) {
  const int across = lastColumnFirst(orientation) ? allWidth - part.x - part.width : part.x;
  const int down = lastRowFirst(orientation) ? allHeight - part.y - part.height : part.y;
  return isOnItsSide(orientation) ? Place{down, across} : Place{across, down};
}

Photo upright(Photo photo, int orientation) {
  if (orientation == 1) {
    return photo;
  }
  Photo turned = isOnItsSide(orientation) ? blankPhoto(photo.height, photo.width)
                                          : blankPhoto(photo.width, photo.height);
  const auto rowsOf = [](const Photo& of) {
    return Rows<uint8_t>{of.pixels.get(), std::ptrdiff_t{kArgbBytes} * of.width};
  };
  turnUpright(orientation, {photo.pixels.get(), rowsOf(photo).pitch}, rowsOf(turned), photo.width,
              photo.height);
  return turned;
}

void cropToEven(Photo& photo, const std::filesystem::path& path) {
  const int width = photo.width & ~1;
  const int height = photo.height & ~1;
  if (width == photo.width && height == photo.height) {
    return;
  }
  if (width == 0 || height == 0) {
    throw BadInput(fmt::format("{}: {}x{} pixels are too few, a frame has at least 2x2",
                               path.string(), photo.width, photo.height));
  }
  note(fmt::format("{}: cropped from {}x{} to {}x{}, frames have even sides", path.string(),
                   photo.width, photo.height, width, height));
  const auto oldRow = static_cast<std::size_t>(photo.width) * kArgbBytes;
  const auto newRow = static_cast<std::size_t>(width) * kArgbBytes;
  for (std::size_t row = 1; row < static_cast<std::size_t>(height); ++row) {
    std::memmove(&photo.pixels[row * newRow], &photo.pixels[row * oldRow], newRow);
  }
  photo.width = width;
  photo.height = height;
}

Photo blankPhoto(int width, int height) {
  const std::size_t bytes = pixelCount(width, height) * kArgbBytes;
  Photo photo{allocateBlock(std::max<std::size_t>(1, bytes)), width, height};
  if (!photo.pixels) {
    throw std::bad_alloc();
  }
  return photo;
}

Photo copyOf(const Photo& photo) {
  Photo copy = blankPhoto(photo.width, photo.height);
  std::memcpy(copy.pixels.get(), photo.pixels.get(),
              pixelCount(photo.width, photo.height) * kArgbBytes);
  return copy;
}

uint32_t* wordsOf(const Photo& photo) { return reinterpret_cast<uint32_t*>(photo.pixels.get()); }

void makeOpaque(Photo& photo) {
  const std::size_t bytes = pixelCount(photo.width, photo.height) * kArgbBytes;
  for (std::size_t i = kArgbBytes - 1; i < bytes; i += kArgbBytes) {
    photo.pixels[i] = 255;
  }
}

}  // namespace alg::tool
