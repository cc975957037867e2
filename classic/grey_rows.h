// Row kernels between packed 3-byte pixels and rows of single bytes: one grey byte a pixel, or the
// three channels as planes.
//
// Rows of single bytes are padded: kRowPadding bytes behind the last one may be read and written
// and hold anything, so that kernels work in whole vectors. Packed rows are never touched outside.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

inline constexpr std::size_t kRowPadding = 128;

/// The weights of a pixel's bytes 0, 1 and 2 in 16 fractional bits. They add up to 1, their low
/// bytes to 256 at most; checked where they are built.
struct GreyWeights {
  uint16_t of[3];

  constexpr bool fit() const {
    return of[0] + of[1] + of[2] == 1 << 16 && of[0] % 256 + of[1] % 256 + of[2] % 256 <= 256;
  }
};

/// grey[x] = (the weighted sum of pixel x) >> 16.
void greyRow(const uint8_t* pixels, uint8_t* grey, std::size_t width, const GreyWeights& weights);
void greyRowPlain(const uint8_t* pixels, uint8_t* grey, std::size_t width,
                  const GreyWeights& weights);

/// Writes each grey into all three bytes of its pixel.
void spreadGreyRow(const uint8_t* grey, uint8_t* pixels, std::size_t width);
void spreadGreyRowPlain(const uint8_t* grey, uint8_t* pixels, std::size_t width);

/// The same with a tint: bytes 0 and 1 of a pixel gain those of its tint, up to 255.
void tintGreyRow(const uint8_t* grey, const uint8_t* tints, uint8_t* pixels, std::size_t width);
void tintGreyRowPlain(const uint8_t* grey, const uint8_t* tints, uint8_t* pixels,
                      std::size_t width);

/// Byte c of pixel x goes to planes[c * pitch + x].
void splitRow(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch, std::size_t width);
void splitRowPlain(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch, std::size_t width);

}  // namespace alg
