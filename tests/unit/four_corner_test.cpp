// Fisheye and FillLightFix against their literal walks.
#include <cmath>

#include "corner_reference.h"
#include "effect_check.h"
#include "libalgorithm/classic_effects.h"

namespace {

template <auto kRoutine, auto kReference>
PackedEffect effect(const char* name, float value) {
  return {name, [=](auto* src, auto* dst, int w, int h) { kRoutine(src, dst, value, w, h); },
          [=](auto* src, auto* dst, int w, int h) { kReference(src, dst, value, w, h); }};
}
const auto kFisheye = effect<Fisheye, ref::fisheye>;
const auto kFillLight = effect<FillLightFix, ref::fillLight>;

/// Columns, rows, portraits, landscapes. Products leave 32 bits in the sizes from 131074 on, and
/// some sources of the longest fish-eyes lie outside.
constexpr std::pair<int, int> kShapes[] = {{3, 700},    {700, 3},     {1, 5000},
                                           {5000, 1},   {90, 160},    {8311, 30},
                                           {131074, 3}, {1200000, 2}, {2, 1200000}};

TEST(FourCorner, Walk) {
  const PackedEffect small[] = {kFisheye("Fisheye 0.5", 0.5f), kFillLight("FillLight 0.3", 0.3f)};
  const PackedEffect large[] = {kFisheye("Fisheye NaN", NAN), kFillLight("FillLight 0.4", 0.4f),
                                kFillLight("FillLight 0.8", 0.8f),
                                kFillLight("FillLight 0.1", 0.1f)};
  for (const auto& each : small) checkEverySize(each);
  onEachTarget([&] {
    for (const auto& each : large) {
      for (const auto& [w, h] : kShapes) checkOn(each, noise(w * h * 3, w), w, h);
    }
  });
}

TEST(FourCorner, FillLightSurvivesAnyRadius) {
  for (const float radius : {0.0f, -0.0f, -1.0f, 1e30f, -1e30f, 1e-30f, 65536.0f, HUGE_VALF, NAN}) {
    for (const bool pageBefore : {false, true}) {
      const Guarded src(noise(37 * 21 * 3), pageBefore), dst(src.bytes(), pageBefore);
      FillLightFix(src.data(), dst.data(), radius, 37, 21);
    }
  }
}

}  // namespace
