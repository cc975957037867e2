// nature: saturation raised against the upper left neighbour, then contrast.
//
// c is one of the pixel's channels, MAX and MIN are taken over the pixel and its neighbour:
//
//     s = (MAX - MIN) x (1 / MAX)      float; the reciprocal is a rounded float, too
//     k = trunc(c x c x (1 / MAX))     double
//     v = c x (1 - s) + k x s          double, but k x s float
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/neighbourhood.h"
#include "kernels/curve_steps.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PackedImage;

struct Reciprocals {
  float of[256];  // 1 / i, and 0 for 0
};

const Reciprocals& reciprocals() {
  static const Reciprocals kReciprocals = [] {
    Reciprocals r;
    r.of[0] = 0;
    for (int i = 1; i < 256; ++i) {
      r.of[i] = static_cast<float>(1.0 / i);
    }
    return r;
  }();
  return kReciprocals;
}

uint8_t saturate(int c, float reciprocal, float s) {
  const auto k = static_cast<int>(c * c * static_cast<double>(reciprocal));
  // Both the product and the sum fit 40 bits, so that they are exact: this equals a fused step.
  const double v = (c * (1.0 - s)) + static_cast<double>(static_cast<float>(k) * s);
  return alg::contrastBy(1.5, static_cast<int>(v));
}

void boost(const uint8_t* pixel, const uint8_t* neighbour, uint8_t* out, const Reciprocals& r) {
  const int b = pixel[0], g = pixel[1], red = pixel[2];
  const int neighbourMax = std::max({neighbour[0], neighbour[1], neighbour[2]});
  const int max = std::max({b, g, red, neighbourMax});
  // The neighbour counts with its blue or with its maximum, never with its true minimum.
  const bool blueIsLeast = neighbour[0] < std::min(neighbour[1], neighbour[2]);
  const int min = std::min({b, g, red, blueIsLeast ? int{neighbour[0]} : neighbourMax});
  const float reciprocal = r.of[max];
  const float s = static_cast<float>(max - min) * reciprocal;
  out[0] = saturate(red, reciprocal, s);
  out[1] = saturate(g, reciprocal, s);
  out[2] = saturate(b, reciprocal, s);
}

/// The top row goes left to right while the bottom row goes right to left: with two rows each reads
/// what the other has just overwritten.
void copyRowsCrosswise(const PackedImage& dst) {
  if (dst.height < 2) {
    return;
  }
  for (int k = 0; k < dst.width; ++k) {
    const int mirrored = dst.width - 1 - k;
    alg::copyPixel(dst.at(0, k), dst.at(1, k));
    alg::copyPixel(dst.at(dst.height - 1, mirrored), dst.at(dst.height - 2, mirrored));
  }
}

/// The right column takes its neighbour. The left one takes the three bytes from y x width + 1 on,
/// byte by byte: they lie near the top of the image, and in row 0 they overlap the pixel itself.
void copyColumnsAskew(const PackedImage& dst) {
  const std::ptrdiff_t end = dst.height * dst.rowBytes();
  for (int y = 0; y < dst.height; ++y) {
    const std::ptrdiff_t from = (std::ptrdiff_t{y} * dst.width) + 1;
    for (int k = 0; k < alg::kPackedBytes && from + k < end; ++k) {
      dst.at(y, 0)[k] = dst.bytes[from + k];
    }
    if (dst.width > 1) {
      alg::copyPixel(dst.at(y, dst.width - 1), dst.at(y, dst.width - 2));
    }
  }
}

}  // namespace

void nature(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const PackedImage image{dst, width, height};
  alg::walkWindows(alg::packedRows(src, width), image, alg::WindowTarget::kCentre,
                   [&r = reciprocals()](const uint8_t* top, const uint8_t* middle,
                                        const uint8_t* /*bottom*/, uint8_t* out, int count) {
                     for (int x = 0; x < count; ++x, out += alg::kPackedBytes) {
                       middle += alg::kPackedBytes;
                       boost(middle, top, out, r);
                       top += alg::kPackedBytes;
                     }
                   });
  copyRowsCrosswise(image);
  copyColumnsAskew(image);
}

namespace alg::operation {

constinit const Operation kNature{
    .name = "nature",
    .routine = "nature",
    .family = Family::kDrawing,
    .shows = "Deep colours, hard contrast.",
    .formula = "Saturation raised relative to the upper left neighbour, then contrast of gain 1.5.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .readsDestination = true,
    .pipeline = {.name = "nature", .identifier = 6},
    .run = runPlain<nature>,
};

}  // namespace alg::operation
