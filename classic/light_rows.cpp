// The definition of the fill light.
#include "classic/light_rows.h"

#include <cstddef>
#include <limits>

#include "classic/four_corner.h"

namespace alg {
namespace {

/// Limited above only: a negative sum keeps its low 8 bits.
uint8_t lit(uint8_t v, int gain) { return static_cast<uint8_t>(std::min(v + gain, 255)); }

}  // namespace

int truncated(double v) {
  if (!(v > std::numeric_limits<int>::min())) {
    return v < 0 ? std::numeric_limits<int>::min() : 0;
  }
  return v < std::numeric_limits<int>::max() ? static_cast<int>(v)
                                             : std::numeric_limits<int>::max();
}

void fillLightPlain(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  Gains run[kCornerRun];
  walkFourCorners(
      light.width, light.height,
      [&](int dy, int dx, int count) {
        const FillLight constant = light;  // so that writing to the run can't change it
        for (int i = 0; i < count; ++i) {
          run[i] = constant.gains(dy, dx + i);
        }
      },
      [&](int i, const Corners& corners) {
        for (const std::size_t at : corners) {
          const uint8_t red = src[at + 2];
          const uint8_t green = src[at + 1];
          const uint8_t blue = src[at];
          dst[at] = lit(red, run[i].red);
          dst[at + 1] = lit(green, run[i].green);
          dst[at + 2] = lit(blue, run[i].blue);
        }
      });
}

}  // namespace alg
