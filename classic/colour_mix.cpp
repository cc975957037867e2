// The classic effects that mix the channels of each pixel by fixed weights.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "libalgorithm/classic_effects.h"

namespace {

/// What goes to destination bytes 0, 1 and 2.
using Mixed = std::array<int, alg::kPackedBytes>;

/// dst = mix(blue, green, red) for each pixel in memory order, each read whole before it is
/// written: src and dst may overlap in any way.
template <class Mix>
void mixPixels(const uint8_t* src, uint8_t* dst, int width, int height, Mix mix) {
  for (std::size_t rest = alg::pixelCount(width, height); rest > 0; --rest) {
    const Mixed mixed = mix(src[0], src[1], src[2]);
    dst[0] = static_cast<uint8_t>(mixed[0]);
    dst[1] = static_cast<uint8_t>(mixed[1]);
    dst[2] = static_cast<uint8_t>(mixed[2]);
    src += alg::kPackedBytes;
    dst += alg::kPackedBytes;
  }
}

/// A weighted sum in fixed point with `shift` fractional bits.
struct Weights {
  int red, green, blue, shift;

  constexpr int sum(int r, int g, int b) const { return (red * r + green * g + blue * b) >> shift; }
};

constexpr Weights kLuma{306, 601, 117, 10};
constexpr Weights kSepiaRed{805, 1575, 387, 11};
constexpr Weights kSepiaGreen{715, 1405, 344, 11};
constexpr Weights kSepiaBlue{557, 1097, 268, 11};  // 239 at most

}  // namespace

void GrayScale(unsigned char* src, unsigned char* dst, int width, int height) {
  mixPixels(src, dst, width, height, [](int b, int g, int r) {
    const int luma = kLuma.sum(r, g, b);
    return Mixed{luma, luma, luma};
  });
}

void Sepia(unsigned char* src, unsigned char* dst, int width, int height) {
  mixPixels(src, dst, width, height, [](int b, int g, int r) {
    return Mixed{std::min(kSepiaRed.sum(r, g, b), 255), std::min(kSepiaGreen.sum(r, g, b), 255),
                 kSepiaBlue.sum(r, g, b)};
  });
}
