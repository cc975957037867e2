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

TEST(Pretty, StretchedRowsMayBeAskedForInAnyOrder) {
  const Bytes picture = noise(5 * 2 * 4);
  alg::StretchedRows rows(5, 2, 7, 3, alg::StretchedPixels::kWhole);
  ASSERT_TRUE(rows.any());
  for (const int row : {0, 1, 2, 0}) {
    const uint8_t* const got = rows.row(picture.data(), row);
    for (int i = 0; i < 7; ++i) {
      EXPECT_TRUE(same({got + 4 * i, 4}, {&picture[asSize(4 * (row * 2 / 3 * 5 + i * 5 / 7))], 4}));
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
