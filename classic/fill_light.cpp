// A fill light in the middle of the picture.
#include "catalogue/operations.h"
#include "classic/light_rows.h"
#include "libalgorithm/classic_effects.h"

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
