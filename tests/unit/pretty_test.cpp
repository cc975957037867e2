// The eight Pretty filters against the reference.
#include "guarded.h"
#include "libalgorithm/pretty_filters.h"
#include "pretty/soft_light.h"
#include "vector_targets.h"

namespace {

using ref::Picture;

void run(int id, uint8_t* src, uint8_t* dst, int width, int height, const Picture& overlay) {
  static constexpr decltype(&PrettySweet) kSimple[] = {PrettySweet, PrettyNature, PrettyBlue,
                                                       PrettyMoonlight, PrettyWhiteDew};
  static constexpr decltype(&PrettyPink) kOverlaid[] = {PrettyBeautiful, PrettyPink, PrettyJapan};
  if (id < 25) return kSimple[id - 20](src, dst, width, height);
  const Guarded pixels(overlay.rgba);
  kOverlaid[id - 25](src, dst, width, height, pixels.data(), overlay.width, overlay.height);
}

/// Runs a filter from src to dst, `shift` bytes apart in one guarded block.
void check(int id, int width, int height, int overlayWidth, int overlayHeight, int shift) {
  const Picture overlay{overlayWidth, overlayHeight, noise(overlayWidth * overlayHeight * 4)};
  const Guarded got(noise(width * height * 3 + std::abs(shift)));
  const int srcAt = std::max(-shift, 0), dstAt = std::max(shift, 0);
  Bytes expected = got.bytes();
  ref::filter(id, expected.data() + srcAt, expected.data() + dstAt, width, height,
              overlay.rgba.data(), overlayWidth, overlayHeight);
  run(id, got.data() + srcAt, got.data() + dstAt, width, height, overlay);
  EXPECT_TRUE(same(got.bytes(), expected)) << "filter " << id << " " << width << "x" << height
                                           << " overlay " << overlayWidth << " shift " << shift;
}

TEST(Pretty, EveryPairOfPixelAndOverlayByteGivesTheReferenceByte) {
  Picture overlay{256, 256, {}};
  Bytes pixels, values, others, blended, got(256 * 256 * 3), expected(got.size());
  for (int pair = 0; pair < 65536; ++pair) {
    const auto c = uint8_t(pair), o = uint8_t(pair >> 8);
    pixels.insert(pixels.end(), 3, c);
    overlay.rgba.insert(overlay.rgba.end(), 4, o);
    EXPECT_EQ(alg::softLight(c, o), ref::softLight(c, o)) << +c << " " << +o;
    values.push_back(c), others.push_back(o), blended.push_back(uint8_t(ref::softLight(c, o)));
  }
  onEachTarget([&] {
    const Guarded c(values), o(others), light(Bytes(values.size()));
    alg::softLightBytes(c.data(), o.data(), light.data(), values.size());
    EXPECT_TRUE(same(light.bytes(), blended));
    for (int id = 20; id <= 27; ++id) {
      ref::filter(id, pixels.data(), expected.data(), 256, 256, overlay.rgba.data(), 256, 256);
      run(id, pixels.data(), got.data(), 256, 256, overlay);
      EXPECT_TRUE(same(got, expected)) << id;
    }
  });
}

TEST(Pretty, KnownColours) {
  const uint8_t cases[][6] = {
      // filter, grey, overlay byte; result
      {20, 0, 0, 68, 0, 42},        {21, 0, 0, 12, 12, 12},        {21, 255, 0, 255, 247, 255},
      {22, 0, 0, 40, 1, 0},         {22, 255, 0, 255, 255, 204},   {23, 0, 0, 1, 26, 26},
      {23, 255, 0, 255, 229, 229},  {24, 0, 0, 11, 1, 1},          {24, 255, 0, 255, 255, 255},
      {25, 0, 0, 35, 17, 17},       {25, 128, 9, 173, 182, 182},   {25, 255, 255, 243, 249, 249},
      {26, 0, 128, 0, 0, 0},        {26, 128, 128, 162, 162, 162}, {26, 255, 128, 254, 254, 254},
      {27, 0, 128, 28, 28, 8},      {27, 85, 128, 120, 120, 108},  {27, 170, 127, 216, 216, 212},
      {27, 255, 128, 244, 244, 243}};
  for (const auto& c : cases) {
    Bytes pixel(3, c[1]);
    run(c[0], pixel.data(), pixel.data(), 1, 1, {1, 1, Bytes(4, c[2])});
    EXPECT_TRUE(same(pixel, {c + 3, 3})) << +c[0] << " " << +c[1];
  }
}

TEST(Pretty, SizesOverlaysAndOverlapsGiveTheOnePixelAtATimeResult) {
  onEachTarget([] {
    for (int id = 20; id <= 27; ++id) {
      for (const int shift : {0, 1, -1, 2, 3, -3, 5, 6, -8, 16, 47, 48, -49, 96, 300}) {
        for (int width = 1; width <= 40; width += 3) check(id, width, 2, width % 8 + 1, 1, shift);
        check(id, 67, 33, 200, 90, shift);
        check(id, 67, 33, 66, 7, shift);
      }
      check(id, 3000, 2, 4001, 3, 20000);
      for (const auto& [width, height] : kSizesBelowOne)
        run(id, nullptr, nullptr, width, height, {});
    }
  });
}

TEST(Pretty, PartsOfAStripMakeTheWhole) {
  constexpr int kWidth = 45, kHeight = 40, kRowBytes = kWidth * 3;
  const Picture overlay{19, 27, noise(19 * 27 * 4)};
  const Bytes pixels = noise(kRowBytes * kHeight);
  for (const int id : {26, 27}) {
    Bytes expected(pixels.size());
    ref::filter(id, pixels.data(), expected.data(), kWidth, kHeight, overlay.rgba.data(), 19, 27);
    for (const int rows : {1, 3, 7, 40}) {
      Bytes got = pixels;
      alg::SoftLightImage image(id == 26 ? alg::pinkEffect() : alg::japanEffect(),
                                {overlay.rgba.data(), 19, 27}, kWidth, kHeight);
      for (int row = 0; row < kHeight; row += rows) {
        uint8_t* part = got.data() + row * kRowBytes;
        image.mapRows(part, part, row, std::min(rows, kHeight - row));
      }
      EXPECT_TRUE(same(got, expected)) << id << " " << rows;
    }
  }
}

#if defined(__x86_64__)
__attribute__((target("avx2,fma"), noinline))
#endif
double
multiplyAdd(double a, double b, double c) {
  return a * b + c;
}

TEST(Compiler, DoesNotFuseWhatTheSourceDoesNotFuse) {
#if defined(__x86_64__)
  if (!__builtin_cpu_supports("fma")) GTEST_SKIP() << "no fused instruction to fall for";
#endif
  volatile double nearOne = 1.0 + 0x1p-30;  // its square needs 61 bits; not folded
  EXPECT_EQ(multiplyAdd(nearOne, nearOne, -(1.0 + 0x1p-29)), 0.0);
}

}  // namespace
