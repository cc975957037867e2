// A fill light in the middle of the picture. Distances and weights are Q15 (32768 = 1.0). 32-bit
// products wrap, which they do for radii below about 0.27.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "classic/four_corner.h"
#include "libalgorithm/classic_effects.h"

namespace {

/// Truncates; what no int can hold becomes the nearest one, and NaN 0, on every machine alike.
int toInt(double v) {
  if (!(v > std::numeric_limits<int>::min())) {
    return v < 0 ? std::numeric_limits<int>::min() : 0;
  }
  return v < std::numeric_limits<int>::max() ? static_cast<int>(v)
                                             : std::numeric_limits<int>::max();
}

/// What a run of pixels gains.
struct LightRun {
  int red[alg::kCornerRun];
  int green[alg::kCornerRun];
  int blue[alg::kCornerRun];
};

/// From the squared distance (1.0 at the corners) to about the distance: 0.2 at the centre, 1.0 at
/// the corners.
constexpr int falloff(int d) {
  const int d2 = (d * d) >> 15;
  const int d4 = (d2 * d2) >> 15;
  return 2 *
         (((d * 23837) >> 15) + 3401 - ((d2 * 22035) >> 15) + ((((d2 * d) >> 15) * 18134) >> 15) -
          ((d4 * 8790) >> 15) + ((((d * d4) >> 15) * 1837) >> 15));
}

class FillLight {
 public:
  FillLight(float radius, int width, int height)
      : full(toInt(radius * 32768.0f)),
        inverse(toInt((1.0 / static_cast<double>(radius + radius)) * 32768.0)) {
    const int halfWidth = width >> 1;
    const int halfHeight = height >> 1;
    const int squared = halfHeight * halfHeight + halfWidth * halfWidth;
    norm = squared == 0 ? 0 : (1 << 30) / squared;
  }

  void fill(LightRun& run, int dy, int dx, int count) const {
    const FillLight light = *this;  // so that writing to the run can't change it
    for (int i = 0; i < count; ++i) {
      const int weight = light.weightAt(dy, dx + i);
      const int dimmed = static_cast<int>(((32767 - weight) * 8 - 163835) * 0.33333);
      run.red[i] = ((dimmed * 122) >> 15) + ((weight * 255) >> 15);
      run.green[i] = ((dimmed * 74) >> 15) + ((weight * 33) >> 13);
      run.blue[i] = ((dimmed * 97) >> 15) + ((weight * 97) >> 15);
    }
  }

 private:
  int weightAt(int dy, int dx) const {
    const int distance = ((dy * dy + dx * dx) * norm) >> 15;
    const int reach = std::max(full, falloff(distance)) + (full >> 2);
    return std::max(32767 - ((reach * inverse) >> 15), 0);
  }

  int full;     // the radius; within it the light does not fall off
  int inverse;  // of the diameter
  int norm;     // 2^30 / squared half diagonal
};

/// Limited above only: a negative sum keeps its low 8 bits.
uint8_t lit(uint8_t v, int gain) { return static_cast<uint8_t>(std::min(v + gain, 255)); }

}  // namespace

void FillLightFix(unsigned char* src, unsigned char* dst, float radius, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const FillLight light(radius, width, height);
  LightRun run;
  alg::walkFourCorners(
      width, height, [&](int dy, int dx, int count) { light.fill(run, dy, dx, count); },
      [&](int i, const alg::Corners& corners) {
        for (const std::size_t at : corners) {
          const uint8_t red = src[at + 2];
          const uint8_t green = src[at + 1];
          const uint8_t blue = src[at];
          dst[at] = lit(red, run.red[i]);
          dst[at + 1] = lit(green, run.green[i]);
          dst[at + 2] = lit(blue, run.blue[i]);
        }
      });
}
