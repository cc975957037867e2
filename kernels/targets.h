// Which of the instruction sets that kernels are compiled for this machine takes.
//
// Highway's headers are all that is used of it: its library, which would choose as well, calibrates
// a timer when it is loaded, which costs each process 8 ms.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

namespace alg {

/// Best first; x86-64 has three, arm64 one, of which nothing is chosen.
enum class Target : uint8_t { kNone, kAvx512, kAvx2, kPlain, kNeon };

/// The target that kernels are called for: the best one, or that which is forced. kNone before the
/// first call of a kernel.
extern std::atomic<Target> chosenTarget;

/// Sets chosenTarget.
Target chooseTarget();

/// Those of this machine, best first.
std::vector<Target> supportedTargets();

/// Has kernels called for this target, or for the best one (kNone). For tests and benchmarks; with
/// AVX-512, a kernel that has no twin for it takes its twin for AVX2.
void forceTarget(Target target);

const char* targetName(Target target);

/// The twin for this machine out of those that there are; `avx512` may be null.
template <class Kernel>
Kernel* pickTwin(Kernel* avx512, Kernel* avx2, Kernel* plain) {
  Target target = chosenTarget.load(std::memory_order_relaxed);
  if (target == Target::kNone) {
    target = chooseTarget();
  }
  if (target == Target::kPlain) {
    return plain;
  }
  return target == Target::kAvx512 && avx512 != nullptr ? avx512 : avx2;
}

}  // namespace alg
