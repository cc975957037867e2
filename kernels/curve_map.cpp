#include "kernels/curve_map.h"

#include <functional>

#include "base/image_size.h"

namespace alg {

void mapCurvesPlain(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  for (const uint8_t* end = src + kPackedBytes * pixels; src != end;
       src += kPackedBytes, dst += kPackedBytes) {
    const uint8_t from0 = curves.curve[0][src[0]];
    const uint8_t from1 = curves.curve[1][src[1]];
    const uint8_t from2 = curves.curve[2][src[2]];
    dst[0] = from2;
    dst[1] = from1;
    dst[2] = from0;
  }
}

void mapCurves(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  // A destination that starts inside the source feeds results back into pixels still to be read;
  // only the pixel-by-pixel walk does that right.
  const std::less<> before;
  const bool feedsBack = before(src, dst) && before(dst, src + kPackedBytes * pixels);
  (feedsBack ? mapCurvesPlain : mapCurvesSimd)(src, dst, pixels, curves);
}

}  // namespace alg
