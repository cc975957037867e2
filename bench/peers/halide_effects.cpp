// Effects beside Halide programs.
#include <cmath>

#include "bench/peers/halide.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"

namespace alg::bench {
namespace {

using Halide::cast;
using Halide::Expr;
using Halide::Func;
using Halide::ImageParam;
using Halide::RDom;

constexpr std::size_t kBytes = 3 * kPixels;

const HalideNames& names() {
  static const HalideNames kNames;
  return kNames;
}

ImageParam packedImage() { return halideImage(3, kWidth, kHeight); }

Expr wide(const Expr& e) { return cast<int32_t>(cast<int16_t>(e)); }

/// Pixels at the edges that Halide does not write and the comparison leaves out: those that effects
/// of neighbours copy from elsewhere.
struct Border {
  int left = 0, top = 0, right = 0, bottom = 0;
};

HalideBuffer inside(const Bytes& bytes, const Border& border) {
  HalideBuffer buffer = halideBuffer(bytes, 3, kWidth, kHeight);
  buffer.crop(1, border.left, kWidth - border.left - border.right);
  buffer.crop(2, border.top, kHeight - border.top - border.bottom);
  return buffer;
}

using Effect = void(uint8_t* src, uint8_t* dst, int width, int height);

struct Work {
  const char* name;
  double required;
  double tolerance;
  double operations;
  const char* schedule;
};

Duel halideDuel(Scene& s, Bytes& from, const Work& work, Effect* ours, const Func& result,
                const ImageParam& source, const Border& border = {}) {
  return {.work = work.name,
          .required = work.required,
          .moved = 2 * kBytes,
          .result = kBytes,
          .tolerance = work.tolerance,
          .ours = [&s, &from, ours] { ours(from.data(), s.ours.data(), kWidth, kHeight); },
          .peers = {{std::string("Halide: ") + work.schedule,
                     halideRun(result, source, inside(from, {}), inside(s.theirs, border))}},
          .difference =
              [&s, border] {
                Nearness nearness;
                for (int y = border.top; y < kHeight - border.bottom; ++y) {
                  const std::size_t begin = 3 * (pixelsOf(kWidth, y) + std::size_t(border.left));
                  const std::size_t end = 3 * (pixelsOf(kWidth, y + 1) - std::size_t(border.right));
                  nearness.add(&s.ours[begin], &s.theirs[begin], end - begin);
                }
                return nearness;
              },
          .operations = work.operations};
}

/// Vectors of pixels, all channels at once, which interleaves them.
Halide::Stage interleave(Func& result, int vector) {
  const auto& n = names();
  layOut(result, 3, kWidth);
  return result.bound(n.c, 0, 3)
      .split(n.x, n.x, n.xi, vector)
      .reorder(n.c, n.xi, n.x, n.y)
      .unroll(n.c)
      .vectorize(n.xi);
}

// One pixel -----------------------------------------------------------------------------------

/// A byte at a time: vectors of look-ups take twice as long.
Duel curves(Scene& s) {
  const auto& n = names();
  HalideBuffer table(256, 3);
  for (int v = 0; v < 256; ++v) {
    auto byte = static_cast<uint8_t>(v);
    uint8_t pixel[3] = {byte, byte, byte}, crossed[3];
    PrettySweet(pixel, crossed, 1, 1);
    for (int c = 0; c < 3; ++c) table(v, c) = crossed[c];
  }
  const ImageParam source = packedImage();
  Func result;
  result(n.c, n.x, n.y) = table(cast<int>(source(2 - n.c, n.x, n.y)), n.c);
  layOut(result, 3, kWidth);
  result.bound(n.c, 0, 3).reorder(n.c, n.x, n.y).unroll(n.c).unroll(n.x, 4);
  return halideDuel(s, s.packed, {"three curves (PrettySweet)", 4.0, 0, 0, "look-ups, unrolled"},
                    PrettySweet, result, source);
}

/// A weighted sum >> 16 of a pixel's bytes in 16-bit lanes, exact: see the grey row kernels.
Expr weighted(const ImageParam& source, const Halide::Var& x, const Halide::Var& y,
              const int (&weights)[3]) {
  Expr high = cast<uint16_t>(0), low = high;
  for (int c = 0; c < 3; ++c) {
    const Expr byte = cast<uint16_t>(source(c, x, y));
    high += byte * static_cast<uint16_t>(weights[c] >> 8);
    low += byte * static_cast<uint16_t>(weights[c] & 0xFF);
  }
  return cast<uint8_t>((high + (low >> 8)) >> 8);
}

Duel grey(Scene& s) {
  const auto& n = names();
  const ImageParam source = packedImage();
  Func grey, result;
  grey(n.x, n.y) = weighted(source, n.x, n.y, {117 << 6, 601 << 6, 306 << 6});
  result(n.c, n.x, n.y) = grey(n.x, n.y);
  interleave(result, 32);
  grey.compute_at(result, n.x).vectorize(n.x, 32);
  return halideDuel(s, s.packed, {"GrayScale", 1.0, 0, 0, "16-bit lanes, 32 pixels a step"},
                    GrayScale, result, source);
}

Duel sepia(Scene& s) {
  const auto& n = names();
  constexpr int kWeights[3][3] = {{387, 1575, 805}, {344, 1405, 715}, {268, 1097, 557}};
  const ImageParam source = packedImage();
  Func result;
  const auto sum = [&](const int(&w)[3]) {
    const auto byte = [&](int c) { return wide(source(c, n.x, n.y)); };
    return cast<uint8_t>(min((byte(0) * w[0] + byte(1) * w[1] + byte(2) * w[2]) >> 11, 255));
  };
  result(n.c, n.x, n.y) = Halide::mux(n.c, {sum(kWeights[0]), sum(kWeights[1]), sum(kWeights[2])});
  interleave(result, 32);
  return halideDuel(s, s.packed, {"Sepia", 1.4, 0, 0, "sums of 16-bit products, 32 pixels a step"},
                    Sepia, result, source);
}

// Neighbours ------------------------------------------------------------------------------------

constexpr int kStrip = 64;  // rows

/// Rows of what windows look at stay in the cache, each computed once in a strip of rows.
void slide(Func& rows, Func& windows, Func& result) {
  const auto& n = names();
  interleave(result, 32).split(n.y, n.y, n.yi, kStrip).reorder(n.c, n.xi, n.x, n.yi, n.y);
  windows.compute_at(result, n.x).vectorize(n.x, 32);
  rows.store_at(result, n.y).compute_at(result, n.yi).vectorize(n.x, 64);
}

Duel emboss(Scene& s) {
  const auto& n = names();
  const ImageParam source = packedImage();
  Func grey, relief, result;
  grey(n.x, n.y) = weighted(source, n.x, n.y, {4732, 46871, 13933});
  const Expr step = cast<int16_t>(grey(n.x, n.y)) - cast<int16_t>(grey(n.x - 2, n.y - 2));
  relief(n.x, n.y) = cast<uint8_t>(clamp(step * cast<int16_t>(16) + cast<int16_t>(128), 0, 255));
  result(n.c, n.x, n.y) = relief(n.x, n.y);
  slide(grey, relief, result);
  return halideDuel(s, s.packed,
                    {"Emboss", 1.25, 0, per_pixel::kEmboss, "grey rows slide, 32 windows a step"},
                    Emboss, result, source, {2, 2, 1, 2});
}

/// The gradient of f around x, y; the middle row and column weigh `middle`.
struct Steps {
  Expr x, y;
};

Steps gradient(const std::function<Expr(int dx, int dy)>& f, int middle) {
  const auto at = [&](int dx, int dy) { return cast<int16_t>(f(dx, dy)); };
  const Expr m = cast<int16_t>(middle);
  return {at(-1, -1) + m * at(-1, 0) + at(-1, 1) - at(1, -1) - m * at(1, 0) - at(1, 1),
          at(-1, -1) + m * at(0, -1) + at(1, -1) - at(-1, 1) - m * at(0, 1) - at(1, 1)};
}

Expr energy(const Steps& g) { return wide(g.x) * wide(g.x) + wide(g.y) * wide(g.y); }

Duel sketch(Scene& s) {
  const auto& n = names();
  const ImageParam source = packedImage();
  Func grey, lines, result;
  grey(n.x, n.y) = weighted(source, n.x, n.y, {74 << 6, 732 << 6, 218 << 6});
  const Steps g = gradient([&](int dx, int dy) { return grey(n.x + dx, n.y + dy); }, 1);
  const Expr length = sqrt(cast<float>(energy({2 * g.x, 2 * g.y})));
  lines(n.x, n.y) = cast<uint8_t>(255 - min(cast<int>(length), 255));
  result(n.c, n.x, n.y) = lines(n.x, n.y);
  slide(grey, lines, result);
  return halideDuel(s, s.packed,
                    {"Sketch", 1.25, 0, per_pixel::kSketch, "grey rows slide, 32 windows a step"},
                    Sketch, result, source, {1, 1, 1, 1});
}

/// The edges' grey by its formula in floats: faster than looking it up.
Duel prague(Scene& s) {
  const auto& n = names();
  const ImageParam source = packedImage();
  Func planes, ink, result;
  planes(n.x, n.y, n.c) = source(n.c, n.x, n.y);
  const Steps g = gradient([&](int dx, int dy) { return planes(n.x + dx, n.y + dy, n.c); }, 2);
  const Expr length = min(sqrt(cast<float>(energy(g))) * (1 / 350.0F), 1.0F);
  const Expr rise = 1.0F - Halide::fast_exp(-5.0F * length * sqrt(length));
  const Expr grey = cast<uint16_t>(255 - cast<int>(rise * 255.0F));
  const Expr v = cast<uint16_t>(planes(n.x, n.y, n.c));
  ink(n.x, n.y, n.c) =
      cast<uint8_t>(select(v < 128, (v * grey) >> 7, 255 - (((255 - v) * (255 - grey)) >> 7)));
  result(n.c, n.x, n.y) = ink(n.x, n.y, 2 - n.c);
  slide(planes, ink, result);
  planes.reorder(n.c, n.x, n.y).bound(n.c, 0, 3).unroll(n.c);
  ink.bound(n.c, 0, 3).unroll(n.c);
  return halideDuel(s, s.packed,
                    {"Prague", 1.0, 0.5, per_pixel::kPrague, "planes slide, 32 windows a step"},
                    [](auto* src, auto* dst, int w, int h) { Prague(src, dst, w, h, 0); }, result,
                    source, {1, 1, 1, 1});
}

// A box ------------------------------------------------------------------------------------------

constexpr int kRadius = 24;
constexpr int kSide = 2 * kRadius + 1;

/// Behind the end of its ramp the radius is the peak.
void blurWithPeak(uint8_t* src, uint8_t* dst, int width, int height) {
  miniature_r(src, dst, width, height, 100, 2);
}

/// Boxes across by doubling sums: 49 pixels are three times 16 and one. Down the columns running
/// sums, begun anew in each tile.
Duel boxBlur(Scene& s) {
  constexpr int kTileRows = 250, kTileColumns = 512, kLanes = 32;
  const auto& n = names();
  const Halide::Var strip, row, tile;
  const ImageParam source = packedImage();
  const auto mean = [](const Expr& sum) {
    const Expr scaled = (cast<uint32_t>(sum) * Expr(uint32_t{65536 / kSide})) >> 16;
    return cast<uint8_t>(cast<uint16_t>(scaled));
  };
  Func doubled[5], across, down, blurred, result;
  doubled[0](n.x, n.y, n.c) = cast<uint16_t>(source(n.c, clamp(n.x, 0, kWidth - 1), n.y));
  for (int i = 1; i < 5; ++i) {
    const Func& half = doubled[i - 1];
    doubled[i](n.x, n.y, n.c) = half(n.x, n.y, n.c) + half(n.x + (1 << i >> 1), n.y, n.c);
  }
  const auto sixteen = [&](int x) { return doubled[4](n.x - kRadius + x, n.y, n.c); };
  across(n.x, n.y, n.c) =
      mean(sixteen(0) + sixteen(16) + sixteen(32) + doubled[0](n.x - kRadius + 48, n.y, n.c));
  const auto taken = [&](const Expr& y) {
    return cast<uint16_t>(across(n.x, clamp(y, 0, kHeight - 1), n.c));
  };
  const RDom box(0, kSide), rows(1, kTileRows - 1);
  down(n.x, row, strip, n.c) = cast<uint16_t>(0);
  down(n.x, 0, strip, n.c) += taken(strip * kTileRows - kRadius + box);
  const Expr y = strip * kTileRows + rows;
  down(n.x, rows, strip, n.c) =
      cast<uint16_t>(down(n.x, rows - 1, strip, n.c) + taken(y + kRadius) - taken(y - 1 - kRadius));
  blurred(n.x, n.y, n.c) = mean(down(n.x, n.y % kTileRows, n.y / kTileRows, n.c));
  result(n.c, n.x, n.y) = blurred(n.x, n.y, 2 - n.c);

  layOut(result, 3, kWidth);
  result.bound(n.c, 0, 3)
      .bound(n.x, 0, kWidth)
      .bound(n.y, 0, kHeight)
      .split(n.y, n.y, n.yi, kTileRows)
      .split(n.x, tile, n.x, kTileColumns, Halide::TailStrategy::ShiftInwards)
      .split(n.x, n.x, n.xi, kLanes)
      .reorder(n.c, n.xi, n.x, n.yi, tile, n.y)
      .unroll(n.c)
      .vectorize(n.xi);
  blurred.compute_at(result, n.x).bound(n.c, 0, 3).unroll(n.c).vectorize(n.x, kLanes);
  down.compute_at(result, tile);
  down.update(0).reorder(n.x, box, n.c).vectorize(n.x, kLanes);
  down.update(1).reorder(n.x, rows, n.c).vectorize(n.x, kLanes);
  across.compute_at(result, tile).reorder(n.x, n.c, n.y).vectorize(n.x, kLanes);
  for (int i = 1; i < 5; ++i) doubled[i].compute_at(across, n.c).vectorize(n.x, kLanes);
  doubled[0].compute_at(across, n.y).reorder(n.c, n.x, n.y).bound(n.c, 0, 3).unroll(n.c);
  doubled[0].vectorize(n.x, kLanes);
  return halideDuel(s, s.packed,
                    {"miniature, radius 24 everywhere", 1.0, 0, per_pixel::kBox,
                     "doubling sums across, running sums down, in tiles"},
                    blurWithPeak, result, source);
}

}  // namespace

std::vector<Duel> halideEffectDuels(Scene& s) {
  return {curves(s), grey(s), sepia(s), boxBlur(s), emboss(s), sketch(s), prague(s)};
}

}  // namespace alg::bench
