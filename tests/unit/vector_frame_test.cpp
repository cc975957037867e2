// What kernels take a target for, by the names of all versions of Highway.
#include "hwy/detect_targets.h"

#ifndef HWY_ALL_NEON  // a version without these names (it has one of the bits for SVE2)
#define HWY_AVX3_ZEN4 (1LL << 6)
#define HWY_SSE2 (1LL << 14)
#define HWY_NEON_BF16 (1LL << 26)
#define HWY_NEON_WITHOUT_AES (1LL << 29)
#define HWY_ALL_NEON (HWY_NEON | HWY_NEON_BF16 | HWY_NEON_WITHOUT_AES)
#endif

#include <gtest/gtest.h>

#include "kernels/vector_frame.h"

namespace {

// Below, the target that is being compiled is an argument.
#undef HWY_TARGET
#define HWY_TARGET target

constexpr bool isAvx512(int64_t target) { return ALG_IS_AVX512(); }
constexpr bool isAvx2(int64_t target) { return ALG_IS_AVX2(); }
constexpr bool isNeon(int64_t target) { return ALG_IS_NEON(); }
constexpr bool hasVectors(int64_t target) { return ALG_HAS_VECTORS(); }

TEST(VectorFrame, KnowsNeonByAllItsNames) {
  for (const int64_t target : {HWY_NEON, HWY_NEON_BF16, HWY_NEON_WITHOUT_AES}) {
    EXPECT_TRUE(isNeon(target) && !isAvx2(target) && hasVectors(target)) << target;
  }
  EXPECT_TRUE(isAvx2(HWY_AVX2) && !isNeon(HWY_AVX2) && hasVectors(HWY_AVX2));
  EXPECT_TRUE(isAvx512(HWY_AVX3_DL) && !isAvx2(HWY_AVX3_DL) && hasVectors(HWY_AVX3_DL));
  for (const int64_t target :
       {HWY_SSE2, HWY_SSE4, HWY_AVX3, HWY_AVX3_ZEN4, HWY_SVE, HWY_EMU128, HWY_SCALAR}) {
    EXPECT_FALSE(isNeon(target) || isAvx2(target) || hasVectors(target)) << target;
  }
}

}  // namespace
