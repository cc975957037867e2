// The row kernel of the lomography curves with a vignette.
//
// The vignette is an ellipse made round: offsets from the centre along the longer side are shrunk
// by the ratio of the sides (Q15, 32768 = 1.0), which brings them to about the shorter side's.
// 32-bit sums and products wrap.
#pragma once

#include <algorithm>

#include "kernels/curve_rows.h"

namespace alg {

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

  /// Whether nothing wraps. Then no pixel is farther from the centre than the corners, and its
  /// brightness is 1 at most.
  static bool fits(int width, int height) { return std::max(width, height) <= 0xFFFF; }

  /// What depends on the row only.
  int rowTerm(int y) const { return squared(halfHeight - y, !wide); }

  /// The squared distance from the centre.
  int distance2(int rowTerm, int x) const { return squared(halfWidth - x, wide) + rowTerm; }

  /// The brightness of a pixel: 1 in the inner disc, falling to about 0 at the corners. u and its
  /// square are floats; halving them is exact, and their sum rounds to the same float whether it is
  /// formed in float or in double.
  float at(int rowTerm, int x) const {
    const int far2 = distance2(rowTerm, x);
    if (far2 <= inner) {
      return 1.0f;
    }
    const float t = static_cast<float>(radius2 - far2) * reciprocal;
    const float u = t * t;
    return (0.5f * u) + (0.5f * (u * u));
  }

  /// The factor of an offset along the width.
  int columnScale() const { return wide ? scale : 1 << 15; }

  const int halfWidth, halfHeight;
  const bool wide;
  const int scale;    // shorter side / longer side, Q15
  const int radius2;  // the squared half diagonal
  const int inner;    // squared radius of the disc that keeps its brightness
  const float reciprocal;

 private:
  int squared(int offset, bool alongLongerSide) const {
    const int d = alongLongerSide ? (scale * offset) >> 15 : offset;
    return d * d;
  }
};

/// A row of pixels of three ints, B, G, R: values limited to bytes, mapped, crossed, times the
/// brightness, truncated. dst may be src. The twin is for sizes that fit.
void shadeRow(const Vignette& vignette, int rowTerm, const Curves& curves, const int* src, int* dst,
              int width);
void shadeRowPlain(const Vignette& vignette, int rowTerm, const Curves& curves, const int* src,
                   int* dst, int width);

}  // namespace alg
