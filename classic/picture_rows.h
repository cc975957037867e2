// Row kernels of the effects that blend pictures into the image. Image pixels are packed B, G, R
// and become R, G, B; pictures are stretched already. dst must not feed back into src
// (kernels/overlap.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// Adds `paint`, packed B, G, R, up to 255.
void paintRow(const uint8_t* src, const uint8_t* paint, uint8_t* dst, std::size_t pixels);
void paintRowPlain(const uint8_t* src, const uint8_t* paint, uint8_t* dst, std::size_t pixels);

/// Inverts the image where the alpha of `mask` is not 0 and lays `front` over it, both R, G, B, A:
/// (alpha x front + (255 - alpha) x value) / 256. An opaque front loses up to one level.
void layRow(const uint8_t* src, const uint8_t* front, const uint8_t* mask, uint8_t* dst,
            std::size_t pixels);
void layRowPlain(const uint8_t* src, const uint8_t* front, const uint8_t* mask, uint8_t* dst,
                 std::size_t pixels);

}  // namespace alg
