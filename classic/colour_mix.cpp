// The classic effects that mix the channels of each pixel by fixed weights.
#include "classic/colour_mix.h"

#include <algorithm>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "kernels/overlap.h"
#include "libalgorithm/classic_effects.h"

namespace alg {
namespace {

/// Any overlap of src and dst gives the result of one pixel at a time.
void mixColours(ColourMix mix, const uint8_t* src, uint8_t* dst, int width, int height) {
  const std::size_t pixels = pixelCount(width, height);
  const bool plain = feedsBack(src, dst, kPackedBytes * pixels);
  (plain ? mixColoursPlain : mixColoursSimd)(mix, src, dst, pixels);
}

}  // namespace

void mixColoursPlain(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels) {
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

void GrayScale(unsigned char* src, unsigned char* dst, int width, int height) {
  alg::mixColours(alg::ColourMix::kGrey, src, dst, width, height);
}

void Sepia(unsigned char* src, unsigned char* dst, int width, int height) {
  alg::mixColours(alg::ColourMix::kSepia, src, dst, width, height);
}

namespace alg::operation {

constinit const Operation kGrayScale{
    .name = "gray-scale",
    .routine = "GrayScale",
    .family = Family::kTone,
    .shows = "Black and white.",
    .formula = "BT.601 luma, (306 R + 601 G + 117 B) / 1024, in each channel.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "gray-scale", .identifier = 4},
    .run = runPlain<GrayScale>,
};

constinit const Operation kSepia{
    .name = "sepia",
    .routine = "Sepia",
    .family = Family::kTone,
    .shows = "The brown of an old print.",
    .formula = "A 3 x 3 matrix in units of 1/2048.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "sepia", .identifier = 8},
    .run = runPlain<Sepia>,
};

}  // namespace alg::operation
