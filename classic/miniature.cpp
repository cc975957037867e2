// Tilt-shift: sharp along a band through the middle, blurred towards two opposite edges.
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
