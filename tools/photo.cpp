#include "tools/photo.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "base/image_size.h"
#include "libalgorithm/camera_util.h"
#include "tools/console.h"
#include "tools/files.h"

namespace alg::tool {

namespace {

void mirror(Photo& photo) {
  uint32_t* row = wordsOf(photo);
  for (int y = 0; y < photo.height; ++y, row += photo.width) {
    std::reverse(row, row + photo.width);
  }
}

/// Undoes an orientation: a clockwise turn, then for every other one a mirror image.
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

}  // namespace

PhotoFile readPhoto(const std::filesystem::path& path, int keepSide) {
  const std::vector<uint8_t> file = readFile(path);
  std::optional<DecodedJpeg> photo = decodeJpeg(file, {.keepSide = keepSide});
  if (!photo) {
    throw UserError(fmt::format(
        "{}: not a JPEG, damaged beyond decoding, or too large for the memory", path.string()));
  }
  Metadata metadata(layoutOf(file), path);
  return {upright(std::move(*photo), metadata.orientation()), std::move(metadata)};
}

void cropToEven(Photo& photo, const std::filesystem::path& path) {
  const int width = photo.width & ~1;
  const int height = photo.height & ~1;
  if (width == photo.width && height == photo.height) {
    return;
  }
  if (width == 0 || height == 0) {
    throw UserError(fmt::format("{}: {}x{} pixels are too few, a frame has at least 2x2",
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

EncodedJpeg encodePixels(const uint8_t* pixels, int width, int height, int quality) {
  std::optional<EncodedJpeg> jpeg = encodeJpeg(pixels, width, height, quality);
  if (!jpeg) {
    throw UserError(fmt::format("cannot encode {}x{} pixels as JPEG", width, height));
  }
  return std::move(*jpeg);
}

EncodedJpeg encodePhoto(const Photo& photo, int quality) {
  return encodePixels(photo.pixels.get(), photo.width, photo.height, quality);
}

void writePhoto(const std::filesystem::path& path, const Photo& photo, const Metadata& metadata,
                int quality) {
  const EncodedJpeg jpeg = encodePhoto(photo, quality);
  const std::vector<uint8_t> segments = metadata.segments(photo.width, photo.height, path);
  if (segments.empty()) {
    writeFile(path, bytesOf(jpeg));
    return;
  }
  constexpr std::size_t kStart = 2;  // marker of the image's start
  constexpr std::size_t kJfif = 18;  // the encoder's own first segment
  std::vector<uint8_t> file(bytesOf(jpeg).begin(), bytesOf(jpeg).begin() + kStart);
  file.insert(file.end(), segments.begin(), segments.end());
  file.insert(file.end(), bytesOf(jpeg).begin() + kStart + kJfif, bytesOf(jpeg).end());
  writeFile(path, file);
}

}  // namespace alg::tool
