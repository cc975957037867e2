// Curves of every kind, every colour of the colour mixes, and images whose squared diagonal wraps.
#include "kernels/curve_map.h"
#include "kernels/curve_rows.h"
#include "operation_check.h"

namespace {

TEST(Tone, EveryColourGivesTheReferenceBytes) {
  for (const char* name : {"gray-scale", "sepia"}) checkEveryColour(operationNamed(name));
}

/// A curve from four bytes of noise: any table, or steps on bytes, a third of them with one flaw.
Bytes anyCurve(const uint8_t* dice) {
  if (dice[0] % 4 == 0) return noise(256, dice[1]);
  Bytes curve;
  const int up = dice[1] % 3 == 0 ? 255 : dice[1], down = dice[2] % 3 == 0 ? 0 : dice[2];
  for (int v = 0; v < 256; ++v) {
    const int flipped = dice[0] % 2 == 0 ? v : 255 - v;
    curve.push_back(uint8_t(std::max(std::min(flipped + up, 255) - down, 0)));
  }
  if (dice[3] % 3 == 0) ++curve[dice[3]];
  return curve;
}

TEST(Curves, OfEveryKindMapAsTheirTables) {
  onEachTarget([] {
    for (int seed = 0; seed < 2000; ++seed) {
      const Bytes dice = noise(12, seed);
      const Bytes c0 = anyCurve(&dice[0]), c1 = anyCurve(&dice[4]), c2 = anyCurve(&dice[8]);
      const auto curves = alg::makeCurves([&](int v) { return c0[asSize(v)]; },
                                          [&](int v) { return c1[asSize(v)]; },
                                          [&](int v) { return c2[asSize(v)]; });
      Bytes pixels, expected;
      for (int v = 0; v < 256; ++v) {
        const uint8_t v0 = uint8_t(v), v1 = uint8_t(v * 3 + seed), v2 = uint8_t(255 - v);
        pixels.insert(pixels.end(), {v0, v1, v2});
        expected.insert(expected.end(), {c2[v2], c1[v1], c0[v0]});
      }
      alg::mapCurves(pixels.data(), pixels.data(), 256, curves);
      EXPECT_TRUE(same(pixels, expected)) << "curves " << seed;
    }
  });
}

// From the start of a cache line on or not, apart or in place, with a tail.
TEST(Curves, MapImagesThatGoPastTheCaches) {
  constexpr std::size_t kPixels = 5'600'037, kBytes = 3 * kPixels;
  const Bytes curve = noise(256), pixels = noise(int(kBytes));
  const auto at = [&](int v) { return curve[asSize(v)]; };
  const auto curves = alg::makeCurves(at, at, at);
  Bytes expected(kBytes), got(kBytes + 64 + 1);
  alg::mapCurveRowPlain(pixels.data(), expected.data(), kPixels, curves);
  onEachTarget([&] {
    for (const int offset : {0, 1, 31, 63}) {
      uint8_t* const to = got.data() + offset;
      std::ranges::fill(got, uint8_t(offset));
      alg::mapCurves(pixels.data(), to, kPixels, curves);
      EXPECT_TRUE(same({to, kBytes}, expected)) << offset;
      EXPECT_EQ(to[kBytes], offset) << "behind";
    }
    std::ranges::copy(pixels, got.begin());
    alg::mapCurves(got.data(), got.data(), kPixels, curves);
    EXPECT_TRUE(same({got.data(), kBytes}, expected)) << "in place";
  });
}

TEST(LomoFun, WrapsTheSquaredHalfDiagonalOfLongImages) {  // below 0: brighter than the curves
  for (const auto& [width, height] :
       {std::pair{1201, 800}, {799, 1300}, {100000, 5}, {4, 100001}}) {
    Bytes pixels = noise(width * height * 12, width);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = i % 4 == 0 ? pixels[i] : 0;
    check(trialOn(operationNamed("lomo-fun"), pixels, width, height));
  }
}

}  // namespace
