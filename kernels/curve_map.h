// The curve mapper: three 256-entry curves over packed 3-byte pixels. Every effect whose output
// bytes each depend on one input byte is three curves and one call of mapCurves().
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "kernels/curve_rows.h"

namespace alg {

/// Derives from the curves themselves what else the mapper needs.
void prepareCurves(Curves& curves);

/// Builds the three curves from functions of a byte value (0..255 as int) to a byte.
template <class Curve0, class Curve1, class Curve2>
Curves makeCurves(Curve0 curve0, Curve1 curve1, Curve2 curve2) {
  Curves curves;
  for (int v = 0; v < 256; ++v) {
    curves.curve[0][v] = curve0(v);
    curves.curve[1][v] = curve1(v);
    curves.curve[2][v] = curve2(v);
  }
  prepareCurves(curves);
  return curves;
}

/// dst[0] = curve[2][src[2]], dst[1] = curve[1][src[1]], dst[2] = curve[0][src[0]] for each of
/// `pixels` pixels in memory order, each read whole before it is written. src and dst may overlap
/// in any way.
void mapCurves(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves);

/// The same for an image of packed rows; a size below 1 does nothing.
inline void mapCurves(const uint8_t* src, uint8_t* dst, int width, int height,
                      const Curves& curves) {
  mapCurves(src, dst, pixelCount(width, height), curves);
}

}  // namespace alg
