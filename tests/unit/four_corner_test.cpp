// Fisheye and FillLightFix in extreme shapes and with extreme parameters.
#include "libalgorithm/classic_effects.h"
#include "operation_check.h"

namespace {

/// Columns, rows, portraits, landscapes. Products leave 32 bits in the sizes from 131074 on, and
/// some sources of the longest fish-eyes lie outside.
constexpr std::pair<int, int> kShapes[] = {{3, 700},    {700, 3},     {1, 5000},
                                           {5000, 1},   {90, 160},    {8311, 30},
                                           {131074, 3}, {1200000, 2}, {2, 1200000}};

TEST(FourCorner, WalksExtremeShapes) {
  for (const auto& [w, h] : kShapes) {
    check(trialOn(operationNamed("fish-eye"), noise(w * h * 3, w), w, h));
    Trial light = trialOn(operationNamed("fill-light"), noise(w * h * 3, w), w, h);
    for (const double radius : {0.1, 0.4, 0.8}) light.call.values[0] = radius, check(light);
  }
}

TEST(FourCorner, FillLightIsEvenNoFurtherThanItIs) {  // at this radius gains change just beyond
  for (int w = 60000; w < 60064; ++w) {               // a distance or less a column
    Trial light = trialOn(operationNamed("fill-light"), Bytes(asSize(w * 3), 90), w, 1);
    light.call.values[0] = 0.3, check(light);
  }
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
