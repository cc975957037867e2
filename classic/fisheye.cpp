// The fish-eye.
#include "catalogue/operations.h"
#include "classic/fisheye_rows.h"
#include "libalgorithm/classic_effects.h"

void Fisheye(unsigned char* src, unsigned char* dst, float /*strength*/, int width, int height) {
  if (width >= 1 && height >= 1) {
    alg::fisheye(alg::FisheyeMap(width, height), src, dst);
  }
}

namespace alg::operation {

constinit const Operation kFishEye{
    .name = "fish-eye",
    .routine = "Fisheye",
    .family = Family::kLight,
    .shows = "Bulging, as through a round lens.",
    .formula = "Each pixel takes the nearest one of a lens-shaped map, in fixed point.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kAnything,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .pipeline = {.name = "fish-eye", .identifier = 7, .strips = 1},
    .run = [](const Call& call) { Fisheye(call.src, call.dst, 0, call.width, call.height); },
};

}  // namespace alg::operation
