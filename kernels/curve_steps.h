// Steps that curves of several families are made of: functions of a channel value, 0 to 255, to
// another.
#pragma once

#include <cstdint>

#include "base/clamp.h"

namespace alg {

/// Contrast around 128. The product is truncated toward zero before 128 is added again.
constexpr uint8_t contrastBy(double gain, int v) {
  return clampToByte(static_cast<int>((v - 128) * gain) + 128);
}

/// The square of the distance to 255, in 1/256: 254 for 0, 0 from 240 on.
constexpr int squaredRest(int v) { return ((255 - v) * (255 - v)) >> 8; }

/// Brightens: the value laid over itself as two light sources are.
constexpr uint8_t screen(int v) { return clampToByte(255 - squaredRest(v)); }

}  // namespace alg
