// Runs a test body once per vector target.
#pragma once

#include <gtest/gtest.h>

#include "hwy/highway.h"

static_assert(!HWY_ARCH_X86 || (HWY_TARGETS & HWY_AVX2) != 0, "no target above the plain code");

/// Forces each target that this build and machine have in turn (the plain code is one of them on
/// x86-64) and checks that `body` really dispatched to it.
template <class Body>
void onEachTarget(Body body) {
  hwy::SetSupportedTargetsForTest(0);
  for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    body();
    hwy::ChosenTarget forced;
    forced.Update(target);
    EXPECT_TRUE(hwy::GetChosenTarget().IsInitialized()) << "nothing was dispatched";
    EXPECT_EQ(hwy::GetChosenTarget().GetIndex(), forced.GetIndex()) << "another target ran";
  }
  hwy::SetSupportedTargetsForTest(0);
}
