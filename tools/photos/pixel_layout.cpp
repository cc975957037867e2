#include "tools/photos/pixel_layout.h"

#include "base/image_size.h"

namespace alg::tool {

void fromRgb(const uint8_t* pixels, int samples, Photo& photo) {
  uint8_t* to = photo.pixels.get();
  const uint8_t* const end = to + pixelCount(photo.width, photo.height) * kArgbBytes;
  for (; to != end; to += kArgbBytes, pixels += samples) {
    to[0] = pixels[2];
    to[1] = pixels[1];
    to[2] = pixels[0];
    to[3] = samples == 4 ? pixels[3] : 255;
  }
}

std::vector<uint8_t> toRgb(const Photo& photo) {
  constexpr std::size_t kRgbBytes = 3;
  std::vector<uint8_t> pixels(pixelCount(photo.width, photo.height) * kRgbBytes);
  const uint8_t* from = photo.pixels.get();
  for (std::size_t i = 0; i < pixels.size(); i += kRgbBytes, from += kArgbBytes) {
    pixels[i] = from[2];
    pixels[i + 1] = from[1];
    pixels[i + 2] = from[0];
  }
  return pixels;
}

bool layOverWhite(Photo& photo) {
  bool any = false;
  uint8_t* const end = photo.pixels.get() + pixelCount(photo.width, photo.height) * kArgbBytes;
  for (uint8_t* p = photo.pixels.get(); p != end; p += kArgbBytes) {
    const int alpha = p[3];
    if (alpha == 255) {
      continue;
    }
    any = true;
    for (int i = 0; i < 3; ++i) {
      p[i] = static_cast<uint8_t>((p[i] * alpha + 255 * (255 - alpha) + 127) / 255);
    }
    p[3] = 255;
  }
  return any;
}

}  // namespace alg::tool
