// The classic effects that mix the channels of each pixel by fixed weights.
#include "base/image_size.h"
#include "catalogue/operations.h"
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
