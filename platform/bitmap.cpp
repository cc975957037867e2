#include "platform/bitmap.h"

#include <png.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/device_path.h"

namespace alg {
namespace {

/// a x c / 255, rounded as the platform's decoder does it.
uint8_t premultiply(uint8_t alpha, uint8_t channel) {
  return static_cast<uint8_t>((alpha * channel + 127) / 255);
}

void premultiplyAll(uint8_t* pixels, std::size_t count) {
  for (uint8_t* pixel = pixels; pixel != pixels + 4 * count; pixel += 4) {
    for (int channel = 0; channel < 3; ++channel) {
      pixel[channel] = premultiply(pixel[3], pixel[channel]);
    }
  }
}

/// png_image with its release.
struct PngReader {
  png_image image{};
  PngReader() { image.version = PNG_IMAGE_VERSION; }
  ~PngReader() { png_image_free(&image); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
};

}  // namespace

Bitmap bitmap_effect;

bool decodePngFile(const char* path, Bitmap& bitmap) {
  PngReader reader;
  if (png_image_begin_read_from_file(&reader.image, devicePath(path).c_str()) == 0) {
    return false;
  }
  const bool hasAlpha = (reader.image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
  reader.image.format = PNG_FORMAT_RGBA;
  reader.image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // 16-bit files are not linear light

  const std::size_t pixelCount = std::size_t{reader.image.width} * reader.image.height;
  Block pixels = allocateBlock(4 * pixelCount);
  if (!pixels || png_image_finish_read(&reader.image, nullptr, pixels.get(), 0, nullptr) == 0) {
    return false;
  }
  if (hasAlpha) {
    premultiplyAll(pixels.get(), pixelCount);
  }
  bitmap = Bitmap{std::move(pixels), static_cast<int>(reader.image.width),
                  static_cast<int>(reader.image.height)};
  return true;
}

}  // namespace alg
