// BT.601 video range in 16.16 fixed point: the factors of all conversions.
#pragma once

#include <cstdint>

namespace alg::bt601 {

// Decoding: R = L + 1.596 V, G = L - 0.813 V - 0.392 U, B = L + 2.017 U with L = 1.164 (Y - 16).
inline constexpr int32_t kLumaGain = 76310;
inline constexpr int32_t kRedFromV = 104595;
inline constexpr int32_t kGreenFromV = -53281;
inline constexpr int32_t kGreenFromU = -25677;
inline constexpr int32_t kBlueFromU = 132199;
inline constexpr int32_t kLumaOffset = 16;
inline constexpr int32_t kChromaOffset = 128;
inline constexpr int32_t kChannelMax = 0xFF0000;  // 255 with 16 fractional bits

/// Three factors for R, G, B and an offset, all with 16 fractional bits.
struct Weights {
  int32_t red, green, blue, offset;

  constexpr int32_t apply(int32_t r, int32_t g, int32_t b) const {
    return (red * r + green * g + blue * b + offset) >> 16;
  }
};

// Encoding. For byte input, Y stays in 16..234 and U and V in 16..239: no clamping is needed.
inline constexpr Weights kY{.red = 16830, .green = 33036, .blue = 6416, .offset = 16 << 16};
inline constexpr Weights kU{.red = -9712, .green = -19071, .blue = 28783, .offset = 128 << 16};
inline constexpr Weights kV{.red = 28783, .green = -24104, .blue = -4679, .offset = 128 << 16};

}  // namespace alg::bt601
