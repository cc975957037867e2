// The Pretty filters: colour filters on packed 3-byte pixels.
//
// Every filter reads width x height pixels (rows packed, 3 bytes each) and writes as many, CROSSED:
//
//     src  p0 p1 p2        red   p0 -> q2
//           \ | /          green p1 -> q1
//     dst  q0 q1 q2        blue  p2 -> q0
//
// A pixel is read whole before it is written, and pixels are processed in memory order: src and dst
// may be the same buffer or overlap. A width or height below 1 does nothing. Thread-safe and
// reentrant; curve tables are built once per process.
//
// Beside them stand a colour temperature of the same kind, and a resize and two blurs of 32-bit
// words (0xAARRGGBB, rows packed) that ignore alpha and write 0 there.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

/// Lifted shadows, a soft brightening curve, mixed 75/25 with the source.
ALGORITHM_API void PrettySweet(unsigned char* src, unsigned char* dst, int width, int height);
/// Brightening curve of gain 1.2 with a lift toward white, green held back.
ALGORITHM_API void PrettyNature(unsigned char* src, unsigned char* dst, int width, int height);
/// Contrast and screen on red and green, red scaled down; blue lifted and screened.
ALGORITHM_API void PrettyBlue(unsigned char* src, unsigned char* dst, int width, int height);
/// Contrast and a squeezed screen curve on red and green; blue screened at full range.
ALGORITHM_API void PrettyMoonlight(unsigned char* src, unsigned char* dst, int width, int height);
/// Shadows lifted on red and blue, then contrast and screen on all three.
ALGORITHM_API void PrettyWhiteDew(unsigned char* src, unsigned char* dst, int width, int height);

// Overlay filters. The overlay has overlayWidth x overlayHeight pixels of 4 bytes, rows packed (R,
// G, B, A; alpha is ignored), and is stretched over the frame by nearest neighbour. An overlay size
// below 1 does nothing, except in PrettyBeautiful.

/// Three tone curves. Takes an overlay like its siblings but never reads it.
ALGORITHM_API void PrettyBeautiful(unsigned char* src, unsigned char* dst, int width, int height,
                                   unsigned char* overlay, int overlayWidth, int overlayHeight);
/// Pink colour twist, soft-light blend with the overlay, then a tone curve.
ALGORITHM_API void PrettyPink(unsigned char* src, unsigned char* dst, int width, int height,
                              unsigned char* overlay, int overlayWidth, int overlayHeight);
/// Tone curve, then a soft-light blend with the overlay.
ALGORITHM_API void PrettyJapan(unsigned char* src, unsigned char* dst, int width, int height,
                               unsigned char* overlay, int overlayWidth, int overlayHeight);

/// Warmer: red up and blue down by up to 57 levels, green up by up to 14. As the filters above.
ALGORITHM_API void Temperature(unsigned char* src, unsigned char* dst, int width, int height);

/// Bilinear resize of 32-bit words, 16 fractional bits, truncating: 255 comes out as 253. The
/// right-hand neighbour is bounded by the destination's row number, so strong vertical reduction
/// often takes the pixel itself. Positions are 32-bit: sources of 32768 or more columns or rows
/// wrap around. A size below 1 does nothing. dst and src do not overlap.
extern "C" ALGORITHM_API void Resize(uint32_t* dst, int dstWidth, int dstHeight,
                                     const uint32_t* src, int srcWidth, int srcHeight);

/// Box blur whose radius is 0 in the middle column and grows to 12 at both sides; the centre pixel
/// counts 5 times. dst and src do not overlap. The third argument is ignored. When work memory is
/// short, dst stays as it is.
extern "C" ALGORITHM_API void ActiveBlur(uint32_t* dst, const uint32_t* src, uintptr_t unused,
                                         int width, int height);

/// Box blur whose radius is 0 in the middle column and grows to 24 at both sides, rounded down
/// after each of its two passes. dst holds width x height 32-bit words and may be src itself, but
/// not overlap it in part. When work memory is short, dst stays as it is.
extern "C" ALGORITHM_API void blur(unsigned char* dst, const uint32_t* src, int width, int height);

/// a if it is greater than b, else b: b when either is no number.
extern "C" ALGORITHM_API float maxf(float a, float b);
/// The greater of two ints.
ALGORITHM_API int max(int a, int b);
