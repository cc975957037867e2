// The Pretty filters on all bytes.
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
  Trial trial = trialOn(operationNamed("PrettyPink"), pixels, 256, 256);
  trial.call.pictures[0] = {nullptr, 256, 256}, trial.pictures[0] = overlay;
  check(trial);
}

// Windows are of 8 or 32 pixels: just fitting, too narrow, at the row's end, and of narrow
// pictures.
TEST(Pretty, StretchedRowsTakeTheNearestPixelsInAnyOrder) {
  constexpr int kPictureHeight = 2, kHeight = 3;
  const auto checkWidths = [](int pictureWidth, int width, alg::StretchedPixels pixels) {
    const Guarded picture(noise(pictureWidth * kPictureHeight * 4, width));
    alg::StretchedRows rows(pictureWidth, kPictureHeight, width, kHeight, pixels);
    ASSERT_TRUE(rows.any());
    const int bytes = int(alg::stretchedBytes(pixels));
    for (const int row : {0, 1, 2, 0}) {
      Bytes expected;
      for (int i = 0; i < width * bytes; ++i) {
        const int column = i / bytes * pictureWidth / width, c = i % bytes;
        const bool crossed = pixels == alg::StretchedPixels::kPackedCrossed;
        const int at = row * kPictureHeight / kHeight * pictureWidth + column;
        expected.push_back(picture.data()[4 * at + (crossed ? 2 - c : c)]);
      }
      const uint8_t* const got = rows.row(picture.data(), row);
      EXPECT_TRUE(same({got, got + expected.size()}, expected))
          << pictureWidth << " over " << width;
    }
  };
  onEachTarget([&] {
    for (const int pictureWidth : {1, 5, 7, 8, 31, 32, 33, 64, 65, 67, 151}) {
      for (const int width : {1, 7, 15, 16, 31, 33, 64, 100}) {
        checkWidths(pictureWidth, width, alg::StretchedPixels::kPacked);
        checkWidths(pictureWidth, width, alg::StretchedPixels::kPackedCrossed);
        checkWidths(pictureWidth, width, alg::StretchedPixels::kWhole);
      }
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
