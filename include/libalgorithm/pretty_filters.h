/// @file
/// The Pretty filters: colour filters on packed 3-byte pixels.
///
/// Every filter reads width x height pixels (rows packed, 3 bytes each) and writes as many,
/// CROSSED:
///
///     src  p0 p1 p2        red   p0 -> q2
///           \ | /          green p1 -> q1
///     dst  q0 q1 q2        blue  p2 -> q0
///
/// A whole pixel is read before it is written, and pixels are processed in memory order: src and
/// dst may be the same buffer or overlap. A width or height below 1 does nothing. Thread-safe and
/// reentrant; curve tables are built once per process.
///
/// There are also a colour temperature of the same kind, and a resize and two blurs of 32-bit words
/// (0xAARRGGBB, rows packed) that ignore alpha and write 0 there.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

/// @name Curves
/// @{

/// Lifted shadows, a soft brightening curve, mixed 75/25 with the source.
/// @param src     width x height pixels R, G, B; read only, except where it overlaps dst
/// @param dst     as many pixels B, G, R: the same buffer or any overlap
/// @param width   pixels per row
/// @param height  rows
ALGORITHM_API void PrettySweet(unsigned char* src, unsigned char* dst, int width, int height);
/// Brightening curve of gain 1.2 with a lift toward white, green held back.
/// @copydetails PrettySweet
ALGORITHM_API void PrettyNature(unsigned char* src, unsigned char* dst, int width, int height);
/// Contrast and screen on red and green, red scaled down; blue lifted and screened.
/// @copydetails PrettySweet
ALGORITHM_API void PrettyBlue(unsigned char* src, unsigned char* dst, int width, int height);
/// Contrast and a squeezed screen curve on red and green; blue screened at full range.
/// @copydetails PrettySweet
ALGORITHM_API void PrettyMoonlight(unsigned char* src, unsigned char* dst, int width, int height);
/// Shadows lifted on red and blue, then contrast and screen on all three.
/// @copydetails PrettySweet
ALGORITHM_API void PrettyWhiteDew(unsigned char* src, unsigned char* dst, int width, int height);

/// @}
/// @name Filters with an overlay
/// The overlay is stretched over the frame by nearest neighbour. An overlay size below 1 does
/// nothing, except in PrettyBeautiful. When work memory is short, dst stays as it is.
/// @{

/// Three tone curves; takes an overlay like its siblings but never reads it.
/// @copydetails PrettySweet
/// @param overlay        overlayWidth x overlayHeight pixels of 4 bytes, rows packed (R, G, B, A;
///                       alpha is ignored); only read, not overlapping dst
/// @param overlayWidth   pixels per row of the overlay
/// @param overlayHeight  rows of the overlay
ALGORITHM_API void PrettyBeautiful(unsigned char* src, unsigned char* dst, int width, int height,
                                   unsigned char* overlay, int overlayWidth, int overlayHeight);
/// Pink colour twist, soft-light blend with the overlay, then a tone curve.
/// @copydetails PrettyBeautiful
ALGORITHM_API void PrettyPink(unsigned char* src, unsigned char* dst, int width, int height,
                              unsigned char* overlay, int overlayWidth, int overlayHeight);
/// Tone curve, then a soft-light blend with the overlay.
/// @copydetails PrettyBeautiful
ALGORITHM_API void PrettyJapan(unsigned char* src, unsigned char* dst, int width, int height,
                               unsigned char* overlay, int overlayWidth, int overlayHeight);

/// @}
/// @name Temperature
/// @{

/// Warmer: red up and blue down by up to 57 levels, green up by up to 14. Its pixel order is the
/// reverse of the filters': byte 0 is blue, byte 2 red.
/// @param src     width x height pixels B, G, R; read only, except where it overlaps dst
/// @param dst     as many pixels R, G, B: the same buffer or any overlap
/// @param width   pixels per row
/// @param height  rows
ALGORITHM_API void Temperature(unsigned char* src, unsigned char* dst, int width, int height);

/// @}
/// @name Resize and blurs of 32-bit words
/// @{

/// Bilinear resize of 32-bit words, 16 fractional bits, truncating: 255 comes out as 253. The
/// right-hand neighbour is bounded by the destination's row number, so strong vertical reduction
/// often takes the pixel itself instead. Positions are 32-bit: sources of 32768 or more columns or
/// rows wrap around. A size below 1 does nothing. Thread-safe and reentrant; when work memory is
/// short, it only takes longer.
/// @param dst        dstWidth x dstHeight words, not overlapping src
/// @param dstWidth   pixels per row of dst
/// @param dstHeight  rows of dst
/// @param src        srcWidth x srcHeight words; only read
/// @param srcWidth   pixels per row of src
/// @param srcHeight  rows of src
extern "C" ALGORITHM_API void Resize(uint32_t* dst, int dstWidth, int dstHeight,
                                     const uint32_t* src, int srcWidth, int srcHeight);

/// Box blur whose radius is 0 in the middle column and grows to 12 at both sides; the centre pixel
/// counts 5 times. When work memory is short, dst stays as it is. Thread-safe and reentrant.
/// @param dst     width x height words, not overlapping src
/// @param src     width x height words; only read
/// @param unused  ignored
/// @param width   pixels per row; below 1 does nothing
/// @param height  rows; below 1 does nothing
extern "C" ALGORITHM_API void ActiveBlur(uint32_t* dst, const uint32_t* src, uintptr_t unused,
                                         int width, int height);

/// Box blur whose radius is 0 in the middle column and grows to 24 at both sides, rounded down
/// after each of its two passes. When work memory is short, dst stays as it is. Thread-safe and
/// reentrant.
/// @param dst     width x height 32-bit words: src itself, or not overlapping it
/// @param src     width x height words
/// @param width   pixels per row; below 1 does nothing
/// @param height  rows; below 1 does nothing
extern "C" ALGORITHM_API void blur(unsigned char* dst, const uint32_t* src, int width, int height);

/// @}
/// @name Arithmetic
/// @{

/// The greater of two floats.
/// @param a  any float
/// @param b  any float
/// @return a if it is greater than b, else b: b when either is NaN
extern "C" ALGORITHM_API float maxf(float a, float b);
/// The greater of two ints.
/// @param a  any int
/// @param b  any int
/// @return the greater one
ALGORITHM_API int max(int a, int b);

/// @}
