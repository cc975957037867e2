#include "kernels/curve_map.h"

#include <algorithm>

#include "base/image_size.h"
#include "kernels/overlap.h"

namespace alg {
namespace {

constexpr int kRowEntries = 16;
constexpr int kGroupRows = 4;

/// Finds the steps of a curve. False if it has none with this flip.
bool findSteps(const uint8_t* curve, uint8_t flip, ByteSteps& steps) {
  const auto at = [&](int v) { return int{curve[v ^ flip]}; };
  // 255 stays 255 whatever is added, so that its result shows `down`. The first result above 0 then
  // shows `up`; without one, nothing has to be added.
  int first = 0;
  while (first < 255 && at(first) == 0) {
    ++first;
  }
  const int down = 255 - at(255);
  const int up = at(first) + down - first;
  if (up < 0 || up > 255) {
    return false;
  }
  for (int v = 0; v < 256; ++v) {
    if (at(v) != std::max(std::min(v + up, 255) - down, 0)) {
      return false;
    }
  }
  steps = {flip, static_cast<uint8_t>(up), static_cast<uint8_t>(down)};
  return true;
}

}  // namespace

void prepareCurves(Curves& curves) {
  curves.allSteps = true;
  for (int k = 0; k < 3; ++k) {
    const uint8_t* const curve = curves.curve[k];
    for (int v = 0; v < 256; ++v) {
      const bool lastRow = v / kRowEntries % kGroupRows == kGroupRows - 1;
      curves.rows[k][v] = static_cast<uint8_t>(curve[v] ^ (lastRow ? 0 : curve[v + kRowEntries]));
    }
    ByteSteps& steps = curves.steps[k] = {};
    curves.allSteps &= findSteps(curve, 0, steps) || findSteps(curve, 255, steps);
  }
}

void mapCurves(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  const bool plain = feedsBack(src, dst, kPackedBytes * pixels);
  (plain ? mapCurveRowPlain : mapCurveRow)(src, dst, pixels, curves);
}

}  // namespace alg
