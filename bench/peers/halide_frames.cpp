// Frames and images of 4-byte pixels beside Halide programs.
#include "bench/peers/halide.h"
#include "convert/bt601.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"

namespace alg::bench {
namespace {

using Halide::cast;
using Halide::Expr;
using Halide::Func;
using Halide::ImageParam;

constexpr int kLanes = 32;

const HalideNames& names() {
  static const HalideNames kNames;
  return kNames;
}

// Resize ----------------------------------------------------------------------------------------

struct Extent {
  int width, height;
};

Duel resizing(Scene& s, const char* work, Bytes& from, const Extent& source, const Extent& target,
              const Func& result, const ImageParam& program) {
  const std::size_t bytes = 4 * pixelsOf(target.width, target.height);
  return {.work = work,
          .required = 1.0,
          .moved = 4 * pixelsOf(source.width, source.height) + bytes,
          .result = bytes,
          .tolerance = 2.5,
          .ours =
              [&s, &from, source, target] {
                Resize(reinterpret_cast<uint32_t*>(s.ours.data()), target.width, target.height,
                       reinterpret_cast<const uint32_t*>(from.data()), source.width, source.height);
              },
          .peers = {{"Halide: for just this ratio",
                     halideRun(result, program, halideBuffer(from, 4, source.width, source.height),
                               halideBuffer(s.theirs, 4, target.width, target.height))}},
          .operations = target.width > source.width ? per_pixel::kDoubled : 0};
}

constexpr Extent kWhole{kWidth, kHeight}, kHalf{kWidth / 2, kHeight / 2};

/// Our mix of two neighbours with a share of n / 2 for the second.
Expr mixed(const Expr& a, const Expr& b, int n) {
  return n == 0 ? a - cast<uint16_t>(a > 0) : (a + b - cast<uint16_t>(a > 0)) >> 1;
}

/// Every other pixel. Its neighbours have no share.
Duel halving(Scene& s) {
  const auto& n = names();
  const ImageParam source = halideImage(4, kWhole.width, kWhole.height);
  Func planes, result;
  planes(n.x, n.y, n.c) = cast<uint16_t>(source(n.c, n.x, n.y));
  const Expr across = mixed(planes(2 * n.x, 2 * n.y, n.c), 0, 0);
  result(n.c, n.x, n.y) = select(n.c == 3, cast<uint8_t>(0), cast<uint8_t>(mixed(across, 0, 0)));
  layOut(result, 4, kHalf.width);
  result.bound(n.c, 0, 4)
      .split(n.x, n.x, n.xi, kLanes)
      .reorder(n.c, n.xi, n.x, n.y)
      .unroll(n.c)
      .vectorize(n.xi);
  planes.compute_at(result, n.x).reorder(n.c, n.x, n.y).bound(n.c, 0, 4).unroll(n.c);
  planes.vectorize(n.x, 2 * kLanes, Halide::TailStrategy::RoundUp);
  return resizing(s, "Resize to half", s.words, kWhole, kHalf, result, source);
}

/// Source rows are mixed across once, and down twice.
Duel doubling(Scene& s) {
  static Bytes half = picture(kHalf.width, kHalf.height, 4);
  const auto& n = names();
  const Halide::Var column, row;
  const ImageParam source = halideImage(4, kHalf.width, kHalf.height);
  Func planes, across, result;
  planes(n.x, n.y, n.c) =
      cast<uint16_t>(source(n.c, clamp(n.x, 0, kHalf.width - 1), clamp(n.y, 0, kHalf.height - 1)));
  const Expr here = planes(n.x / 2, n.y, n.c), next = planes(n.x / 2 + 1, n.y, n.c);
  across(n.x, n.y, n.c) = select(n.x % 2 == 0, mixed(here, next, 0), mixed(here, next, 1));
  const Expr upper = across(n.x, n.y / 2, n.c), lower = across(n.x, n.y / 2 + 1, n.c);
  const Expr down = select(n.y % 2 == 0, mixed(upper, lower, 0), mixed(upper, lower, 1));
  result(n.c, n.x, n.y) = select(n.c == 3, cast<uint8_t>(0), cast<uint8_t>(down));
  layOut(result, 4, kWhole.width);
  result.bound(n.c, 0, 4)
      .bound(n.x, 0, kWhole.width)
      .bound(n.y, 0, kWhole.height)
      .align_bounds(n.y, 2)
      .split(n.y, n.y, n.yi, 60)
      .split(n.yi, row, n.yi, 2)
      .split(n.x, n.x, n.xi, kLanes)
      .reorder(n.c, n.xi, n.x, n.yi, row, n.y)
      .unroll(n.c)
      .unroll(n.yi)
      .vectorize(n.xi);
  across.store_at(result, n.y).compute_at(result, row).align_bounds(n.x, 2);
  across.split(n.x, n.x, n.xi, 2 * kLanes).vectorize(n.xi).reorder(n.xi, n.c, n.x, n.y);
  across.bound(n.c, 0, 4).unroll(n.c);
  planes.compute_at(across, n.x).reorder(n.c, n.x, n.y).bound(n.c, 0, 4).unroll(n.c);
  planes.vectorize(n.x, kLanes);
  return resizing(s, "Resize to double", half, kHalf, kWhole, result, source);
}

// Pipeline --------------------------------------------------------------------------------------

constexpr std::size_t kFrame = kPixels * 3 / 2;

/// What a frame consists of, as programs see it.
HalideBuffer lumaOf(const Bytes& frame) {
  return HalideBuffer(const_cast<uint8_t*>(frame.data()), {kWidth, kHeight});
}
HalideBuffer chromaOf(const Bytes& frame) {
  return HalideBuffer(const_cast<uint8_t*>(frame.data()) + kPixels, {2, kWidth / 2, kHeight / 2});
}

/// An effect's curves for B, G and R, bytes 0 to 2 of what it reads.
HalideBuffer curvesOf(decltype(&PrettySweet) effect) {
  HalideBuffer curves(256, 3);
  for (int v = 0; v < 256; ++v) {
    const auto byte = static_cast<uint8_t>(v);
    uint8_t grey[3] = {byte, byte, byte}, crossed[3];
    effect(grey, crossed, 1, 1);
    for (int c = 0; c < 3; ++c) curves(v, c) = crossed[2 - c];
  }
  return curves;
}

/// B, G and R (c = 0 to 2) of a pixel of a frame. As ours, it takes the first chroma byte for U: of
/// NV21 frames red and blue change places, here and again on their way back.
Expr decoded(const ImageParam& luma, const ImageParam& chroma) {
  const auto& n = names();
  const auto shifted = [&](int c) {
    return cast<int>(chroma(c, n.x / 2, n.y / 2)) - bt601::kChromaOffset;
  };
  const Expr u = shifted(0), v = shifted(1);
  const Expr level = bt601::kLumaGain * (cast<int>(luma(n.x, n.y)) - bt601::kLumaOffset);
  const Expr colour =
      Halide::mux(n.c, {bt601::kBlueFromU * u, bt601::kGreenFromV * v + bt601::kGreenFromU * u,
                        bt601::kRedFromV * v});
  return cast<uint8_t>(clamp((level + colour) >> 16, 0, 255));
}

Expr encoded(const bt601::Weights& w, const Func& pixels, const Expr& x, const Expr& y) {
  const auto channel = [&](int c) { return cast<int>(pixels(x, y, c)); };
  return cast<uint8_t>(
      (w.red * channel(2) + w.green * channel(1) + w.blue * channel(0) + w.offset) >> 16);
}

/// Bands of rows on two threads, their pixels in the cache; from one frame into another, because
/// results may not overlap the source.
Halide::Pipeline sweetProgram(const Bytes& frame) {
  constexpr int kBand = 8;
  const auto& n = names();
  ImageParam luma(Halide::UInt(8), 2);
  luma.dim(0).set_bounds(0, kWidth);
  luma.dim(1).set_bounds(0, kHeight).set_stride(kWidth);
  ImageParam chroma = halideImage(2, kWidth / 2, kHeight / 2);
  luma.set(lumaOf(frame));
  chroma.set(chromaOf(frame));
  const HalideBuffer curves = curvesOf(PrettySweet);
  Func plain, pixels, toLuma, toChroma;
  plain(n.x, n.y, n.c) = decoded(luma, chroma);
  pixels(n.x, n.y, n.c) = curves(cast<int>(plain(n.x, n.y, n.c)), n.c);
  toLuma(n.x, n.y) = encoded(bt601::kY, pixels, n.x, n.y);
  const auto sample = [&](const bt601::Weights& w) {  // of a block's bottom left pixel
    return encoded(w, pixels, 2 * n.x, 2 * n.y + 1);
  };
  toChroma(n.c, n.x, n.y) = select(n.c == 0, sample(bt601::kU), sample(bt601::kV));

  toLuma.bound(n.x, 0, kWidth).bound(n.y, 0, kHeight).split(n.y, n.y, n.yi, kBand).parallel(n.y);
  toLuma.vectorize(n.x, kLanes);
  toLuma.output_buffer().dim(1).set_stride(kWidth);
  layOut(toChroma, 2, kWidth / 2);
  toChroma.bound(n.c, 0, 2).bound(n.x, 0, kWidth / 2).bound(n.y, 0, kHeight / 2);
  toChroma.split(n.y, n.y, n.yi, kBand / 2).reorder(n.c, n.x, n.yi, n.y).parallel(n.y);
  toChroma.unroll(n.c).vectorize(n.x, kLanes);
  toChroma.compute_with(toLuma, n.y);
  pixels.compute_at(toLuma, n.y).bound(n.c, 0, 3).reorder(n.c, n.x, n.y).unroll(n.c);
  pixels.unroll(n.x, 4);
  plain.compute_at(pixels, n.y).bound(n.c, 0, 3).reorder(n.c, n.x, n.y).unroll(n.c);
  plain.align_bounds(n.x, 2).vectorize(n.x, kLanes);
  return Halide::Pipeline({toLuma, toChroma});
}

/// Ours begins with the same frame each time, as it works in place.
Duel pipeline(Scene& s) {
  return {.work = "pipeline with PrettySweet, pool on 2 cores",
          .required = 1.0,
          .moved = 2 * kFrame,
          .result = kFrame,
          .tolerance = 0,
          .ours =
              [&s] {
                uint8_t* frame = s.ours.data();
                KAVRO_PrettyEffect_Function("PrettySweet", "", frame, frame + kPixels, kHeight,
                                            kWidth, kWidth, kWidth);
              },
          .peers = {{"Halide: bands of 8 rows, 2 threads",
                     [&s, program = sweetProgram(s.frame)]() mutable {
                       std::vector<Halide::Buffer<>> to{lumaOf(s.theirs), chromaOf(s.theirs)};
                       program.realize(Halide::Realization(to), halideTarget());
                     }}},
          .before = &s.frame,
          .clock = Clock::kWall,
          .operations = per_pixel::kDecode + per_pixel::kCurves + per_pixel::kEncode};
}

}  // namespace

std::vector<Duel> halideFrameDuels(Scene& s) { return {halving(s), doubling(s), pipeline(s)}; }

}  // namespace alg::bench
