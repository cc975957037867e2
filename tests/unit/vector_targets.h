// Runs a test body once per vector target.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "each_target.h"

/// The targets that this machine has to run, best first, the plain code last.
inline std::vector<std::string> expectedTargets() {
#ifdef __aarch64__
  return {"NEON"};
#else
  if (!__builtin_cpu_supports("avx2")) return {"plain"};
  if (!__builtin_cpu_supports("avx512vbmi2")) return {"AVX2", "plain"};
  return {"AVX-512", "AVX2", "plain"};
#endif
}

/// Forces each target in turn and checks that `body` really dispatched to it. A build for one
/// target alone has its kernels called directly.
template <class Body>
void onEachTarget(Body body) {
  std::vector<std::string> ran;
  onEachVectorTarget([&] {
    const std::size_t at = ran.size();
    const alg::Target target = alg::supportedTargets().at(at);
    ran.emplace_back(alg::targetName(target));
    SCOPED_TRACE(ran.back());
    body();
    const alg::Target called = target == alg::Target::kNeon ? alg::Target::kNone : target;
    EXPECT_EQ(alg::chosenTarget, called) << "nothing was dispatched, or another target ran";
  });
  EXPECT_EQ(ran, expectedTargets());
}
