// The definition of the colour mixes.
#include "classic/colour_rows.h"

#include <algorithm>

#include "base/image_size.h"

namespace alg {

void mixColourRowPlain(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels) {
  const auto store = [&dst](int first, int second, int third) {
    dst[0] = static_cast<uint8_t>(first);
    dst[1] = static_cast<uint8_t>(second);
    dst[2] = static_cast<uint8_t>(third);
  };
  for (; pixels > 0; --pixels, src += kPackedBytes, dst += kPackedBytes) {
    const int b = src[0], g = src[1], r = src[2];
    if (mix == ColourMix::kGrey) {
      const int luma = kLuma.sum(r, g, b);
      store(luma, luma, luma);
    } else {
      store(std::min(kSepiaRed.sum(r, g, b), 255), std::min(kSepiaGreen.sum(r, g, b), 255),
            kSepiaBlue.sum(r, g, b));
    }
  }
}

}  // namespace alg
