// The definition of the curve mapper's row kernel.
#include "kernels/curve_rows.h"

#include "base/image_size.h"

namespace alg {

void mapCurveRowPlain(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
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

}  // namespace alg
