#include "kernels/targets.h"

namespace alg {
namespace {

std::atomic<Target> forcedTarget = Target::kNone;

#ifdef __x86_64__

// What Highway compiles its targets for, as far as compilers use it.
bool hasAvx2() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
}

bool hasAvx512() {
  return hasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
         __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vnni") &&
         __builtin_cpu_supports("avx512bitalg") && __builtin_cpu_supports("avx512vpopcntdq") &&
         __builtin_cpu_supports("gfni") && __builtin_cpu_supports("vpclmulqdq");
}

Target bestTarget() {
  return hasAvx512() ? Target::kAvx512 : hasAvx2() ? Target::kAvx2 : Target::kPlain;
}

#else

Target bestTarget() { return Target::kNeon; }

#endif

}  // namespace

std::atomic<Target> chosenTarget = Target::kNone;

Target chooseTarget() {
  const Target forced = forcedTarget.load(std::memory_order_relaxed);
  const Target target = forced != Target::kNone ? forced : bestTarget();
  chosenTarget.store(target, std::memory_order_relaxed);
  return target;
}

std::vector<Target> supportedTargets() {
  std::vector<Target> targets = {bestTarget()};
  while (targets.back() < Target::kPlain) {
    targets.push_back(static_cast<Target>(static_cast<int>(targets.back()) + 1));
  }
  return targets;
}

void forceTarget(Target target) {
  forcedTarget.store(target, std::memory_order_relaxed);
  chosenTarget.store(Target::kNone, std::memory_order_relaxed);
}

const char* targetName(Target target) {
  switch (target) {
    case Target::kAvx512:
      return "AVX-512";
    case Target::kAvx2:
      return "AVX2";
    case Target::kPlain:
      return "plain";
    case Target::kNeon:
      return "NEON";
    default:
      return "none";
  }
}

}  // namespace alg
