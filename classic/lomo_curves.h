// The three curves of the lomography look, which other classic effects share.
#pragma once

#include <cstdint>

#include "base/clamp.h"
#include "kernels/curve_steps.h"

namespace alg {

constexpr uint8_t lomoRed(int v) { return screen(contrastBy(1.5, v)); }
constexpr uint8_t lomoGreen(int v) { return screen(v); }

/// Three quarters of the screened value and a quarter of what it lacks: 63 to 191.
constexpr uint8_t lomoBlue(int v) {
  const int rest = squaredRest(v);
  return clampToByte((((255 - rest) * 3) >> 2) + (rest >> 2));
}

}  // namespace alg
