// Marks what an emulator's plugin (bench/arm64/block_counter.cpp) counts.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>

namespace alg::bench {

// System calls that Linux doesn't have; they fail, and nothing else happens.
constexpr int64_t kBeginCount = 0x7a11c0, kEndCount = 0x7a11c1;

/// Runs `work` as one counted span, and says its number on standard output in front of `what` it
/// is.
template <class Work>
void counted(const char* what, const Work& work) {
  static unsigned span = 0;
  std::printf("%x %s\n", ++span, what);
  std::fflush(stdout);
  syscall(kBeginCount, span);
  work();
  syscall(kEndCount, span);
}

}  // namespace alg::bench
