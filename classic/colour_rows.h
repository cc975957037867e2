// The row kernel of the classic effects that mix the channels of each pixel by fixed weights.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// A weighted sum of a pixel's channels in fixed point with `shift` fractional bits.
struct MixWeights {
  int red, green, blue, shift;

  constexpr int sum(int r, int g, int b) const { return (red * r + green * g + blue * b) >> shift; }
};

inline constexpr MixWeights kLuma{.red = 306, .green = 601, .blue = 117, .shift = 10};
inline constexpr MixWeights kSepiaRed{.red = 805, .green = 1575, .blue = 387, .shift = 11};
inline constexpr MixWeights kSepiaGreen{.red = 715, .green = 1405, .blue = 344, .shift = 11};
// 239 at most
inline constexpr MixWeights kSepiaBlue{.red = 557, .green = 1097, .blue = 268, .shift = 11};

/// What becomes of `pixels` packed pixels (B, G, R): luma in all three bytes, or the sepia sums,
/// 255 at most (R, G, B). Each pixel is read whole before it is written.
enum class ColourMix : uint8_t { kGrey, kSepia };

/// The definition allows any overlap; in the twin dst must not feed back into src
/// (kernels/overlap.h).
void mixColourRow(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels);
void mixColourRowPlain(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels);

}  // namespace alg
