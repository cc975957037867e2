#include "bench/peers/halide.h"

namespace alg::bench {

using Halide::Target;

Target halideTarget() {
  return Halide::get_jit_target_from_environment()
      .with_feature(Target::NoAsserts)
      .with_feature(Target::NoBoundsQuery);
}

HalideBuffer halideBuffer(const Bytes& bytes, int channels, int width, int height) {
  return HalideBuffer(const_cast<uint8_t*>(bytes.data()), {channels, width, height});
}

Halide::ImageParam halideImage(int channels, int width, int height) {
  Halide::ImageParam image(Halide::UInt(8), 3);
  image.dim(0).set_bounds(0, channels).set_stride(1);
  image.dim(1).set_bounds(0, width).set_stride(channels);
  image.dim(2).set_bounds(0, height).set_stride(channels * width);
  return image;
}

void layOut(Halide::Func& result, int channels, int width) {
  auto image = result.output_buffer();
  image.dim(0).set_bounds(0, channels).set_stride(1);
  image.dim(1).set_stride(channels);
  image.dim(2).set_stride(channels * width);
}

std::function<void()> halideRun(Halide::Func result, Halide::ImageParam source, HalideBuffer from,
                                HalideBuffer to) {
  source.set(from);  // which the program keeps
  return [result, source, to]() mutable { result.realize(to, halideTarget()); };
}

}  // namespace alg::bench
