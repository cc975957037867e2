// The definition of the vignette's row kernel.
#include "classic/vignette_rows.h"

#include "base/clamp.h"
#include "base/image_size.h"

namespace alg {
namespace {

/// curve[v] x brightness, truncated. Sides of 92682 and more wrap the squared half diagonal, and
/// brightness is then above 1 or even infinite: 255; 0 x infinity: 0.
int shade(const uint8_t* curve, int v, float brightness) {
  const float value = static_cast<float>(curve[clampToByte(v)]) * brightness;
  return static_cast<int>(std::max(0.0f, std::min(value, 255.0f)));
}

}  // namespace

void shadeRowPlain(const Vignette& vignette, int rowTerm, const Curves& curves, const int* src,
                   int* dst, int width) {
  for (int x = 0; x < width; ++x, src += kPackedBytes, dst += kPackedBytes) {
    const float brightness = vignette.at(rowTerm, x);
    const int b = src[0], g = src[1], r = src[2];  // before dst, which may be src
    dst[0] = shade(curves.curve[2], r, brightness);
    dst[1] = shade(curves.curve[1], g, brightness);
    dst[2] = shade(curves.curve[0], b, brightness);
  }
}

}  // namespace alg
