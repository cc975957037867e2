// Steps that several curves of the classic effects are made of: functions of a channel value, 0 to
// 255, to another.
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

// The three curves of the lomography look.

constexpr uint8_t lomoRed(int v) { return screen(contrastBy(1.5, v)); }
constexpr uint8_t lomoGreen(int v) { return screen(v); }

/// Three quarters of the screened value and a quarter of what it lacks: 63 to 191.
constexpr uint8_t lomoBlue(int v) {
  const int rest = squaredRest(v);
  return clampToByte((((255 - rest) * 3) >> 2) + (rest >> 2));
}

}  // namespace alg
