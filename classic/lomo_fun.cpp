// The lomography curves with a vignette, on images of one int a channel: B, G, R read, R, G, B
// written.
#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/lomo_curves.h"
#include "classic/vignette_rows.h"
#include "kernels/curve_map.h"
#include "libalgorithm/classic_effects.h"

namespace {

/// Rows firstRow..firstRow + rows - 1 of an image; src and dst point at the first of them.
void shadeRows(const int* src, int* dst, int width, int imageHeight, int firstRow, int rows) {
  static const alg::Curves kCurves = alg::makeCurves(alg::lomoBlue, alg::lomoGreen, alg::lomoRed);
  if (width < 1 || rows < 1) {
    return;
  }
  const alg::Vignette vignette(width, imageHeight);
  const auto shade = alg::Vignette::fits(width, imageHeight) ? alg::shadeRow : alg::shadeRowPlain;
  const std::ptrdiff_t pitch = std::ptrdiff_t{width} * alg::kPackedBytes;
  for (int y = 0; y < rows; ++y) {
    shade(vignette, vignette.rowTerm(firstRow + y), kCurves, src + y * pitch, dst + y * pitch,
          width);
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
          shadeRows(reinterpret_cast<int*>(call.src), reinterpret_cast<int*>(call.dst), call.width,
                    call.rowsOfImage(), call.firstRow, call.height);
        },
};

}  // namespace alg::operation
