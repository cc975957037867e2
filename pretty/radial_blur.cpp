// The two blurs that grow with the distance from the middle column.
#include "catalogue/operations.h"
#include "kernels/box_blur.h"
#include "libalgorithm/pretty_filters.h"

// A word's bytes are B, G, R, A in memory. The blurs read and write bytes, so that no buffer needs
// the alignment of words.

void ActiveBlur(uint32_t* dst, const uint32_t* src, uintptr_t /*unused*/, int width, int height) {
  // The unblurred centre would be blended in with a weight of 0.0: centre x 0.0 + blurred,
  // truncated, is the blurred value itself, which is all that is computed.
  alg::blurSquare({.src = reinterpret_cast<const uint8_t*>(src),
                   .dst = reinterpret_cast<uint8_t*>(dst),
                   .width = width,
                   .height = height,
                   .pixels = alg::BlurPixels::kWords,
                   .ramp = {.peak = 12, .entries = width}});
}

void blur(unsigned char* dst, const uint32_t* src, int width, int height) {
  alg::blurSeparable({.src = reinterpret_cast<const uint8_t*>(src),
                      .dst = dst,
                      .width = width,
                      .height = height,
                      .pixels = alg::BlurPixels::kWords,
                      .ramp = {.peak = 24, .entries = width}});
}

namespace alg::operation {

constinit const Operation kBlur{
    .name = "blur",
    .routine = "blur",
    .family = Family::kLight,
    .shows = "The same as miniature, for 32-bit pixels.",
    .formula = "A box blur whose radius grows from 0 in the middle column to 24.",
    .pixels = Pixels::kWords,
    .reach = Reach::kNeighbours,
    .radius = 24,
    .overlap = Overlap::kInPlace,
    .bands = Bands::kNear,
    .halo = 24,
    .run =
        [](const Call& call) {
          blur(call.dst, reinterpret_cast<const uint32_t*>(call.src), call.width, call.height);
        },
};

constinit const Operation kActiveBlur{
    .name = "active-blur",
    .routine = "ActiveBlur",
    .family = Family::kLight,
    .shows = "Blurred towards both sides, half as much as blur.",
    .formula =
        "A box blur whose radius grows from 0 in the middle column to 12, the centre pixel "
        "counting five times.",
    .pixels = Pixels::kWords,
    .reach = Reach::kNeighbours,
    .radius = 12,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 12,
    .run =
        [](const Call& call) {
          ActiveBlur(reinterpret_cast<uint32_t*>(call.dst),
                     reinterpret_cast<const uint32_t*>(call.src), 0, call.width, call.height);
        },
};

}  // namespace alg::operation
