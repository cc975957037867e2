#include "tools/photos/photo.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "base/image_size.h"
#include "libalgorithm/camera_util.h"
#include "tools/shell/console.h"

namespace alg::tool {

namespace {

void mirror(Photo& photo) {
  uint32_t* row = wordsOf(photo);
  for (int y = 0; y < photo.height; ++y, row += photo.width) {
    std::reverse(row, row + photo.width);
  }
}

}  // namespace

/// A clockwise turn, then for every other one a mirror image.
///
///   1     2     3     4     5     6     7     8
///   ab    ba    dc    cd    ac    ca    db    bd      where a photo "ab" of that orientation
///   cd    dc    ba    ab    bd    db    ca    ac                    "cd" ends up
Photo upright(Photo photo, int orientation) {
  constexpr int kDegrees[] = {0, 0, 180, 180, 90, 90, 270, 270};
  const int degrees = kDegrees[orientation - 1];
  if (degrees != 0) {
    Photo turned = degrees == 180 ? blankPhoto(photo.width, photo.height)
                                  : blankPhoto(photo.height, photo.width);
    CameraUtil::rotateARGB(photo.pixels.get(), turned.pixels.get(), photo.width, photo.height,
                           degrees);
    photo = std::move(turned);
  }
  if (orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7) {
    mirror(photo);
  }
  return photo;
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
