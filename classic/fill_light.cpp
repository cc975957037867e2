// A fill light in the middle of the picture.
#include <cstdint>
#include <limits>

#include "catalogue/operations.h"
#include "classic/four_corner.h"
#include "classic/light_gains.h"
#include "libalgorithm/classic_effects.h"

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

void FillLightFix(unsigned char* src, unsigned char* dst, float radius, int width, int height) {
  if (width >= 1 && height >= 1) {
    alg::fillLight(alg::FillLight(radius, width, height), src, dst);
  }
}

namespace alg::operation {

constexpr Parameter kFillLightParameters[] = {{.name = "radius",
                                               .least = 0.3,
                                               .most = 2.0,
                                               .preset = 1.0,
                                               .unit = "half diagonals",
                                               .help = "reach of the light, 1 = the corners"}};

constinit const Operation kFillLight{
    .name = "fill-light",
    .routine = "FillLightFix",
    .family = Family::kLight,
    .shows = "A soft lamp from the front.",
    .formula = "A gain per channel that falls off with the distance from the centre.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kPlace,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .parameters = kFillLightParameters,
    .pipeline = {.name = "fill-light", .identifier = 2, .strips = 1},
    .run =
        [](const Call& call) {
          FillLightFix(call.src, call.dst, call.number(0), call.width, call.height);
        },
};

}  // namespace alg::operation
