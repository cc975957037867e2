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

// Destinations apart from the source, wherever cache lines begin, and in its place.
TEST(Curves, OfLargeImagesMapAsThoseOfSmallOnes) {
  constexpr std::size_t kMany = 5'600'001, kRow = 1000;  // 16 MB
  const auto fold = [](int v) { return uint8_t(v * 5); };
  const auto raise = [](int v) { return uint8_t(std::min(v + 9, 255)); };
  const Bytes source = noise(int(3 * kMany));
  for (const auto& curves :
       {alg::makeCurves(raise, raise, raise), alg::makeCurves(fold, raise, fold)}) {
    Bytes expected(source.size());
    for (std::size_t i = 0; i < kMany; i += kRow) {
      alg::mapCurves(&source[3 * i], &expected[3 * i], std::min(kRow, kMany - i), curves);
    }
    onEachTarget([&] {
      for (const std::size_t begin : {0U, 1U, 2U, 61U}) {
        Bytes result(begin + source.size() + 3, 7);
        alg::mapCurves(source.data(), &result[begin], kMany, curves);
        EXPECT_TRUE(
            std::ranges::equal(expected, std::span(result).subspan(begin, expected.size())));
        EXPECT_EQ(result[begin + source.size()], 7);
      }
      Bytes pixels = source;
      alg::mapCurves(pixels.data(), pixels.data(), kMany, curves);
      EXPECT_TRUE(pixels == expected);
    });
  }
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
