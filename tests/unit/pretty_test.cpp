// The Pretty filters on all bytes.
#include <array>

#include "kernels/stretched_rows.h"
#include "operation_check.h"
#include "pretty/soft_light.h"

namespace {

TEST(Pretty, EveryPairOfPixelAndOverlayByteGivesTheReferenceByte) {
  Bytes pixels, overlay, values, others, blended;
  for (int pair = 0; pair < 65536; ++pair) {
    const auto c = uint8_t(pair), o = uint8_t(pair >> 8);
    pixels.insert(pixels.end(), 3, c);
    overlay.insert(overlay.end(), 4, o);
    values.push_back(c), others.push_back(o), blended.push_back(uint8_t(ref::softLight(c, o)));
  }
  onEachTarget([&] {
    const Guarded c(values), o(others), light(Bytes(values.size()));
    alg::softLightBytes(c.data(), o.data(), light.data(), values.size());
    EXPECT_TRUE(same(light.bytes(), blended));
  });
  for (const char* name : {"PrettyPink", "PrettyJapan"}) {
    Trial trial = trialOn(operationNamed(name), pixels, 256, 256);
    trial.call.pictures[0] = {nullptr, 256, 256}, trial.pictures[0] = overlay;
    check(trial);
  }
}

TEST(Pretty, OverlaysMayBeFarWiderThanTheImage) {
  for (const char* name : {"PrettyPink", "PrettyJapan"}) {
    for (const auto& [width, height, overlayWidth] :
         {std::array{3000, 2, 4001}, {67, 33, 200}, {19, 7, 30011}}) {
      Trial trial = trialOn(operationNamed(name), noise(width * height * 3), width, height);
      trial.call.pictures[0] = {nullptr, overlayWidth, 5};
      trial.pictures[0] = noise(overlayWidth * 5 * 4);
      check(trial);
    }
  }
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
        for (const int c : kind.channels) expected.push_back(picture[asSize(4 * at + c)]);
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
