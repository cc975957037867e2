// The definitions of the grey row kernels.
#include "classic/grey_rows.h"

#include <algorithm>

#include "base/image_size.h"

namespace alg {

void greyRowPlain(const uint8_t* pixels, uint8_t* grey, std::size_t width,
                  const GreyWeights& weights) {
  for (std::size_t x = 0; x < width; ++x, pixels += kPackedBytes) {
    const int sum =
        weights.of[0] * pixels[0] + weights.of[1] * pixels[1] + weights.of[2] * pixels[2];
    grey[x] = static_cast<uint8_t>(sum >> 16);
  }
}

void spreadGreyRowPlain(const uint8_t* grey, uint8_t* pixels, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x, pixels += kPackedBytes) {
    pixels[0] = pixels[1] = pixels[2] = grey[x];
  }
}

void tintGreyRowPlain(const uint8_t* grey, const uint8_t* tints, uint8_t* pixels,
                      std::size_t width) {
  for (std::size_t x = 0; x < width; ++x, tints += kPackedBytes, pixels += kPackedBytes) {
    pixels[0] = static_cast<uint8_t>(std::min(grey[x] + tints[0], 255));
    pixels[1] = static_cast<uint8_t>(std::min(grey[x] + tints[1], 255));
    pixels[2] = grey[x];
  }
}

void splitRowPlain(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch,
                   std::size_t width) {
  for (std::size_t x = 0; x < width; ++x, pixels += kPackedBytes) {
    for (int c = 0; c < kPackedBytes; ++c) {
      planes[c * pitch + static_cast<std::ptrdiff_t>(x)] = pixels[c];
    }
  }
}

}  // namespace alg
