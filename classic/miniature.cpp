// Tilt-shift: sharp along a band through the middle, blurred towards two opposite edges.
#include "catalogue/operations.h"
#include "kernels/box_blur.h"
#include "libalgorithm/classic_effects.h"

namespace {

constexpr int kPeak = 24;

}  // namespace

void miniature(unsigned char* src, unsigned char* dst, int width, int height) {
  alg::blurSeparable({.src = src,
                      .dst = dst,
                      .width = width,
                      .height = height,
                      .pixels = alg::BlurPixels::kPackedCrossed,
                      .ramp = {.peak = kPeak, .entries = width}});
}

void miniature_r(unsigned char* src, unsigned char* dst, int width, int height, int rowOffset,
                 int rampLength) {
  // Rows outside the ramp are the caller's error: they get the peak, or 0 where there is no ramp.
  alg::blurSeparable({.src = src,
                      .dst = dst,
                      .width = width,
                      .height = height,
                      .pixels = alg::BlurPixels::kPackedCrossed,
                      .ramp = {.peak = kPeak, .entries = rampLength},
                      .axis = alg::RampAxis::kRows,
                      .firstEntry = rowOffset});
}

namespace alg::operation {
namespace {

/// The greatest offset and ramp: far beyond any picture.
constexpr int kLongestRamp = 1'000'000;

int rampOf(const Call& call) {
  return call.integer(1) != 0 ? call.integer(1) : call.integer(0) + call.rowsOfImage();
}

}  // namespace

constinit const Operation kMiniature{
    .name = "miniature",
    .routine = "miniature",
    .family = Family::kLight,
    .shows = "Sharp in the middle column, increasingly blurred towards both sides.",
    .formula = "A box blur whose radius grows from 0 to 24.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 24,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 24,
    .pipeline = {.name = "miniature", .identifier = 5, .flagsLandscape = true},
    .run = runPlain<miniature>,
};

constexpr Parameter kMiniatureRowsParameters[] = {
    {.name = "offset",
     .type = Parameter::Type::kInteger,
     .most = kLongestRamp,
     .unit = "rows",
     .help = "first row, within a taller picture"},
    {.name = "ramp",
     .type = Parameter::Type::kInteger,
     .most = kLongestRamp,
     .unit = "rows",
     .help = "rows of that taller picture; 0: it ends with the last row here"}};

constinit const Operation kMiniatureRows{
    .name = "miniature-rows",
    .routine = "miniature_r",
    .family = Family::kLight,
    .shows = "A toy world: sharp across the middle, blurred above and below.",
    .formula =
        "The blur of miniature, from row to row instead of from column to column; the image may be "
        "a strip of a taller one, but boxes do not reach beyond the strip.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 24,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 24,
    .parameters = kMiniatureRowsParameters,
    .misfit = [](const Call& call) -> const char* {
      return rampOf(call) < call.integer(0) + call.rowsOfImage() ? "the ramp ends before them"
                                                                 : nullptr;
    },
    .run =
        [](const Call& call) {
          miniature_r(call.src, call.dst, call.width, call.height, call.integer(0) + call.firstRow,
                      rampOf(call));
        },
};

}  // namespace alg::operation
