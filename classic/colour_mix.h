// Row kernels of the classic effects that mix the channels of each pixel by fixed weights.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// A weighted sum of a pixel's channels in fixed point with `shift` fractional bits.
struct MixWeights {
  int red, green, blue, shift;

  constexpr int sum(int r, int g, int b) const { return (red * r + green * g + blue * b) >> shift; }
};

inline constexpr MixWeights kLuma{306, 601, 117, 10};
inline constexpr MixWeights kSepiaRed{805, 1575, 387, 11};
inline constexpr MixWeights kSepiaGreen{715, 1405, 344, 11};
inline constexpr MixWeights kSepiaBlue{557, 1097, 268, 11};  // 239 at most

/// What becomes of `pixels` packed pixels (B, G, R): luma in all three bytes, or the sepia sums,
/// 255 at most (R, G, B). Each pixel is read whole before it is written.
enum class ColourMix : uint8_t { kGrey, kSepia };

/// The definition.
void mixColoursPlain(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels);

/// The vector twin: dst must not start within src's pixels behind the first (dst <= src is fine).
void mixColoursSimd(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels);

}  // namespace alg
