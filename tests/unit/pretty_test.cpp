// The eight Pretty filters against the reference.
#include "effect_check.h"
#include "kernels/stretched_rows.h"
#include "libalgorithm/pretty_filters.h"
#include "pretty/soft_light.h"

namespace {

using ref::Picture;

/// The filter with an identifier, between a guarded overlay's bytes.
PackedEffect filter(int id, const Picture& overlay) {
  static constexpr decltype(&PrettySweet) kSimple[] = {PrettySweet, PrettyNature, PrettyBlue,
                                                       PrettyMoonlight, PrettyWhiteDew};
  static constexpr decltype(&PrettyPink) kOverlaid[] = {PrettyBeautiful, PrettyPink, PrettyJapan};
  const auto run = [=](auto* src, auto* dst, int width, int height) {
    if (id < 25) return kSimple[id - 20](src, dst, width, height);
    const Guarded pixels(overlay.rgba);
    kOverlaid[id - 25](src, dst, width, height, pixels.data(), overlay.width, overlay.height);
  };
  const auto reference = [=](auto* src, auto* dst, int width, int height) {
    ref::filter(id, src, dst, width, height, overlay.rgba.data(), overlay.width, overlay.height);
  };
  return {ref::kEffects[zu(id)].name.c_str(), run, reference, true};
}

PackedEffect filter(int id, int overlayWidth, int overlayHeight) {
  return filter(id, {overlayWidth, overlayHeight, noise(overlayWidth * overlayHeight * 4)});
}

TEST(Pretty, EveryPairOfPixelAndOverlayByteGivesTheReferenceByte) {
  Picture overlay{256, 256, {}};
  Bytes pixels, values, others, blended;
  for (int pair = 0; pair < 65536; ++pair) {
    const auto c = uint8_t(pair), o = uint8_t(pair >> 8);
    pixels.insert(pixels.end(), 3, c);
    overlay.rgba.insert(overlay.rgba.end(), 4, o);
    values.push_back(c), others.push_back(o), blended.push_back(uint8_t(ref::softLight(c, o)));
  }
  onEachTarget([&] {
    const Guarded c(values), o(others), light(Bytes(values.size()));
    alg::softLightBytes(c.data(), o.data(), light.data(), values.size());
    EXPECT_TRUE(same(light.bytes(), blended));
    for (int id = 20; id <= 27; ++id) checkOn(filter(id, overlay), pixels, 256, 256);
  });
}

TEST(Pretty, SizesOverlaysAndOverlapsGiveTheOnePixelAtATimeResult) {
  onEachTarget([] {
    for (int id = 20; id <= 27; ++id) {
      for (const int shift : {0, 1, -1, 2, 3, -3, 5, 6, -8, 16, 47, 48, -49, 96, 300}) {
        for (int width = 1; width <= 40; width += 3) {
          checkOverlapping(filter(id, width % 8 + 1, 1), width, 2, shift);
        }
        checkOverlapping(filter(id, 200, 90), 67, 33, shift);
        checkOverlapping(filter(id, 66, 7), 67, 33, shift);
      }
      checkOn(filter(id, 4001, 3), noise(3000 * 2 * 3), 3000, 2);
      checkOn(filter(id, 30011, 5), noise(19 * 7 * 3), 19, 7);
      for (const auto& [width, height] : kSizesBelowOne) {
        filter(id, 1, 1).run(nullptr, nullptr, width, height);
      }
    }
  });
}

TEST(Pretty, StretchedRowsHaveTheNearestPixelsOfPicturesOfAnyWidth) {
  struct Kind {
    alg::StretchedPixels pixels;
    std::vector<int> channels;  // of the picture, in the stretched pixel's order
  };
  const Kind kinds[] = {{alg::StretchedPixels::kPacked, {0, 1, 2}},
                        {alg::StretchedPixels::kPackedCrossed, {2, 1, 0}},
                        {alg::StretchedPixels::kWhole, {0, 1, 2, 3}}};
  constexpr int kPictureHeight = 2, kHeight = 3;
  const auto check = [](const Kind& kind, int pictureWidth, int width) {
    const Bytes picture = noise(pictureWidth * kPictureHeight * 4);
    const Guarded pixels(picture);
    alg::StretchedRows rows(pictureWidth, kPictureHeight, width, kHeight, kind.pixels);
    ASSERT_TRUE(rows.any());
    for (const int row : {0, 1, 2, 0}) {
      Bytes expected;
      for (int i = 0; i < width; ++i) {
        const int at = row * kPictureHeight / kHeight * pictureWidth + i * pictureWidth / width;
        for (const int c : kind.channels) expected.push_back(picture[zu(4 * at + c)]);
      }
      const uint8_t* got = rows.row(pixels.data(), row);
      EXPECT_TRUE(same({got, got + expected.size()}, expected))
          << pictureWidth << " over " << width << ", row " << row;
    }
  };
  onEachTarget([&] {
    for (const Kind& kind : kinds) {
      for (int width = 1; width <= 37; ++width) {
        for (const int pictureWidth : {1, 2, 3, 4, 5, 16, 36, 37, 38, 75, 4099}) {
          check(kind, pictureWidth, width);
        }
      }
      for (const int pictureWidth : {720, 960, 641, 639}) check(kind, pictureWidth, 640);
    }
  });
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
