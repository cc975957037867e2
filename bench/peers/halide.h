// What the rows beside Halide share. Programs are compiled before their first run, for this
// processor with all that it has, and for images of just this size. They use one thread unless
// their schedule says otherwise.
#pragma once

#include <Halide.h>

#include "bench/peers/duel.h"

namespace alg::bench {

/// Dimensions of images, vectors (xi) and strips of rows (yi).
struct HalideNames {
  Halide::Var c{"c"}, x{"x"}, y{"y"}, xi{"xi"}, yi{"yi"};
};

using HalideBuffer = Halide::Buffer<uint8_t>;

Halide::Target halideTarget();

/// Images of channels that lie side by side: one in memory, and a program's source.
HalideBuffer halideBuffer(const Bytes& bytes, int channels, int width, int height);
Halide::ImageParam halideImage(int channels, int width, int height);

/// Lays out a result in the same way.
void layOut(Halide::Func& result, int channels, int width);

/// Compiles the program, which writes `to` from `from`.
std::function<void()> halideRun(Halide::Func result, Halide::ImageParam source, HalideBuffer from,
                                HalideBuffer to);

}  // namespace alg::bench
