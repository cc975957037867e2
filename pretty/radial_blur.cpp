// The two blurs that grow with the distance from the middle column.
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
