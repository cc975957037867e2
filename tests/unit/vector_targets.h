// Runs a test body once per vector target.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "each_target.h"
#include "kernels/vector_frame.h"

/// The targets that this machine has to run: the vectors of its kind, then the baseline.
inline std::vector<std::string> expectedTargets() {
#if HWY_ARCH_ARM_A64
  return {hwy::TargetName(HWY_STATIC_TARGET)};  // by whichever of NEON's names
#else
  const std::string baseline = hwy::TargetName(HWY_STATIC_TARGET);
  if (!__builtin_cpu_supports("avx2")) return {baseline};
  return {"AVX2", baseline};
#endif
}

/// Forces each target in turn (the plain code is one of them on x86-64) and checks that `body`
/// really dispatched to it. A build for one target alone has its kernels called directly.
template <class Body>
void onEachTarget(Body body) {
  constexpr bool kDispatches = (HWY_TARGETS & (HWY_TARGETS - 1)) != 0;
  std::vector<std::string> ran;
  onEachVectorTarget([&] {
    const int64_t target = hwy::SupportedTargets();
    ran.emplace_back(hwy::TargetName(target));
    SCOPED_TRACE(ran.back());
    body();
    hwy::ChosenTarget forced;
    forced.Update(target);
    EXPECT_EQ(hwy::GetChosenTarget().IsInitialized(), kDispatches) << "nothing was dispatched";
    if (kDispatches) {
      EXPECT_EQ(hwy::GetChosenTarget().GetIndex(), forced.GetIndex()) << "another target ran";
    }
  });
  EXPECT_EQ(ran, expectedTargets());
}
