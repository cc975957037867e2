// The row kernel of nature: saturation raised against the upper left neighbour, then contrast.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// out[x] from pixels[x] and its neighbour, neighbours[x]; packed B, G, R, written as R, G, B. c is
/// one of the pixel's channels, MAX and MIN are taken over the pixel and its neighbour:
///
///     s = (MAX - MIN) x (1 / MAX)      float; the reciprocal is a rounded float, too
///     k = trunc(c x c x (1 / MAX))     double
///     v = c x (1 - s) + k x s          double, but k x s float
///
/// and v goes through a contrast of 1.5.
void boostRow(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out, std::size_t count);
void boostRowPlain(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out,
                   std::size_t count);

}  // namespace alg
