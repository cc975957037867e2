// The row kernel of the curve mapper.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// A curve as three steps on bytes: v ^ flip (0 or 255), + up with a ceiling at 255, - down with a
/// floor at 0.
struct ByteSteps {
  uint8_t flip, up, down;
};

/// curve[k] maps byte k of a source pixel; its result is stored at byte 2 - k.
struct Curves {
  alignas(16) uint8_t curve[3][256];

  // The same curves as the vector twin wants them; prepareCurves() fills them in.
  alignas(16) uint8_t rows[3][256];  // see curve_rows_simd.cpp
  ByteSteps steps[3];
  bool allSteps;  // all three curves are such steps
};

/// dst[0] = curve[2][src[2]], dst[1] = curve[1][src[1]], dst[2] = curve[0][src[0]] for each pixel,
/// read whole before it is written. The definition allows any overlap; in the twin dst must not
/// feed back into src (kernels/overlap.h).
void mapCurveRow(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves);
void mapCurveRowPlain(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves);

}  // namespace alg
