// The lomography curves with a vignette, on images of one int a channel: B, G, R read, R, G, B
// written.
//
// The vignette is an ellipse made round: offsets from the centre along the longer side are shrunk
// by the ratio of the sides (Q15, 32768 = 1.0), which brings them to about the shorter side's.
// 32-bit sums and products wrap.
#include <algorithm>
#include <cstdint>

#include "base/clamp.h"
#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/lomo_curves.h"
#include "kernels/curve_map.h"
#include "libalgorithm/classic_effects.h"

namespace {

class Vignette {
 public:
  /// Sizes are at least 1.
  Vignette(int width, int height)
      : halfWidth(width >> 1),
        halfHeight(height >> 1),
        wide(width > height),
        scale(wide ? (height << 15) / width : (width << 15) / height),
        radius2(halfHeight * halfHeight + halfWidth * halfWidth),
        inner(static_cast<int>(radius2 * 0.19999999999999996)),
        // Infinite for a single pixel, which lies inside the disc and has no use for it.
        reciprocal(static_cast<float>(1.0 / (radius2 - inner))) {}

  /// What depends on the row only.
  int rowTerm(int y) const { return squared(halfHeight - y, !wide); }

  /// The brightness of a pixel: 1 in the inner disc, falling to about 0 at the corners. u and its
  /// square are floats; halving them is exact, and their sum rounds to the same float whether it is
  /// formed in float or in double.
  float at(int rowTerm, int x) const {
    const int distance2 = squared(halfWidth - x, wide) + rowTerm;
    if (distance2 <= inner) {
      return 1.0f;
    }
    const float t = static_cast<float>(radius2 - distance2) * reciprocal;
    const float u = t * t;
    return (0.5f * u) + (0.5f * (u * u));
  }

 private:
  int squared(int offset, bool alongLongerSide) const {
    const int d = alongLongerSide ? (scale * offset) >> 15 : offset;
    return d * d;
  }

  int halfWidth, halfHeight;
  bool wide;
  int scale;    // shorter side / longer side, Q15
  int radius2;  // the squared half diagonal
  int inner;    // squared radius of the disc that keeps its brightness
  float reciprocal;
};

/// curve[v] x brightness, truncated. Sides of 92682 and more wrap the squared half diagonal, and
/// brightness is then above 1 or even infinite: 255; 0 x infinity: 0.
int shade(const uint8_t* curve, int v, float brightness) {
  const float value = static_cast<float>(curve[alg::clampToByte(v)]) * brightness;
  return static_cast<int>(std::max(0.0f, std::min(value, 255.0f)));
}

/// Rows firstRow..firstRow + rows - 1 of an image; src and dst point at the first of them.
void shadeRows(const int* src, int* dst, int width, int imageHeight, int firstRow, int rows) {
  static const alg::Curves kCurves = alg::makeCurves(alg::lomoBlue, alg::lomoGreen, alg::lomoRed);
  if (width < 1 || rows < 1) {
    return;
  }
  const Vignette vignette(width, imageHeight);
  for (int y = firstRow; y < firstRow + rows; ++y) {
    const int rowTerm = vignette.rowTerm(y);
    for (int x = 0; x < width; ++x, src += alg::kPackedBytes, dst += alg::kPackedBytes) {
      const float brightness = vignette.at(rowTerm, x);
      const int b = src[0], g = src[1], r = src[2];  // before dst, which may be src
      dst[0] = shade(kCurves.curve[2], r, brightness);
      dst[1] = shade(kCurves.curve[1], g, brightness);
      dst[2] = shade(kCurves.curve[0], b, brightness);
    }
  }
}

}  // namespace

void LomoFun(int* src, int* dst, int width, int height) {
  shadeRows(src, dst, width, height, 0, height);
}

namespace alg::operation {

constinit const Operation kLomoFun{
    .name = "lomo-fun",
    .routine = "LomoFun",
    .family = Family::kLight,
    .shows = "Lomo with dark corners.",
    .formula =
        "Full brightness up to a fifth of the squared half diagonal, from there (t^2 + t^4) / 2 "
        "down to black at the corners.",
    .pixels = Pixels::kInts,
    .reach = Reach::kPlace,
    .overlap = Overlap::kInPlace,
    .run =
        [](const Call& call) {
          shadeRows(reinterpret_cast<const int*>(call.src), reinterpret_cast<int*>(call.dst),
                    call.width, call.rowsOfImage(), call.firstRow, call.height);
        },
};

}  // namespace alg::operation
