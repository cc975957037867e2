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
#pragma once

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
