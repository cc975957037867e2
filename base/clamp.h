// Clamping of colour values.
#pragma once

#include <cstdint>

namespace alg {

/// Limits v to 0..255.
constexpr uint8_t clampToByte(int v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

/// Truncates toward zero, then limits to 0..255.
constexpr uint8_t truncToByte(double v) { return clampToByte(static_cast<int>(v)); }

}  // namespace alg
