// The lomography curves with a vignette, on images of one int a channel: B, G, R read, R, G, B
// written.
#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/lomo_curves.h"
#include "classic/vignette_rows.h"
#include "kernels/curve_map.h"
#include "libalgorithm/classic_effects.h"

void LomoFun(int* src, int* dst, int width, int height) {
  static const alg::Curves kCurves = alg::makeCurves(alg::lomoBlue, alg::lomoGreen, alg::lomoRed);
  if (width < 1 || height < 1) {
    return;
  }
  const alg::Vignette vignette(width, height);
  const auto shade = alg::Vignette::fits(width, height) ? alg::shadeRow : alg::shadeRowPlain;
  const std::ptrdiff_t pitch = std::ptrdiff_t{width} * alg::kPackedBytes;
  for (int y = 0; y < height; ++y) {
    shade(vignette, vignette.rowTerm(y), kCurves, src + y * pitch, dst + y * pitch, width);
  }
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
    .bands = Bands::kWholeImage,
    .run =
        [](const Call& call) {
          LomoFun(reinterpret_cast<int*>(call.src), reinterpret_cast<int*>(call.dst), call.width,
                  call.height);
        },
};

}  // namespace alg::operation
