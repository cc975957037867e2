// The classic effects that mix the channels of each pixel by fixed weights.
#include "base/image_size.h"
#include "classic/colour_rows.h"
#include "kernels/overlap.h"
#include "libalgorithm/classic_effects.h"

namespace {

/// src and dst may overlap in any way.
void mixColours(alg::ColourMix mix, const uint8_t* src, uint8_t* dst, int width, int height) {
  const std::size_t pixels = alg::pixelCount(width, height);
  const bool plain = alg::feedsBack(src, dst, alg::kPackedBytes * pixels);
  (plain ? alg::mixColourRowPlain : alg::mixColourRow)(mix, src, dst, pixels);
}

}  // namespace

void GrayScale(unsigned char* src, unsigned char* dst, int width, int height) {
  mixColours(alg::ColourMix::kGrey, src, dst, width, height);
}

void Sepia(unsigned char* src, unsigned char* dst, int width, int height) {
  mixColours(alg::ColourMix::kSepia, src, dst, width, height);
}
