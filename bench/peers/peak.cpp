#include "bench/peers/peak.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "bench/measure.h"

namespace alg::bench {
namespace {

constexpr int kChains = 12;  // more than additions are under way at a time
constexpr int kSteps = 1'000'000;

template <std::size_t kBytes>
struct Lanes {
  using Vector [[gnu::vector_size(kBytes)]] = uint16_t;
  static constexpr double kAdditions = 1.0 * kSteps * kChains * (kBytes / sizeof(uint16_t));
};

/// Chains of additions; each is hidden from the compiler, which would put many into one.
#if defined(__x86_64__)
#define ALG_HIDE(vector) asm volatile("" : "+v"(vector))
#else
#define ALG_HIDE(vector) asm volatile("" : "+w"(vector))
#endif
#define ALG_ADDITIONS(kBytes)                             \
  Lanes<kBytes>::Vector chains[kChains] = {}, one = {};   \
  one += 1;                                               \
  for (int step = 0; step < kSteps; ++step) {             \
    _Pragma("GCC unroll 12") for (auto& chain : chains) { \
      chain += one;                                       \
      ALG_HIDE(chain);                                    \
    }                                                     \
  }

double secondsOf(void (*additions)()) {
  double best = 1e9;
  for (int i = 0; i < 9; ++i) {
    const double start = seconds(CLOCK_THREAD_CPUTIME_ID);
    additions();
    best = std::min(best, seconds(CLOCK_THREAD_CPUTIME_ID) - start);
  }
  return best;
}

#if defined(__x86_64__)
[[gnu::target("avx512bw")]] void additions64() { ALG_ADDITIONS(64) }
[[gnu::target("avx2")]] void additions32() { ALG_ADDITIONS(32) }
#endif
void additions16() { ALG_ADDITIONS(16) }

double measured() {
  double most = Lanes<16>::kAdditions / secondsOf(additions16);
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") != 0) {
    most = std::max(most, Lanes<32>::kAdditions / secondsOf(additions32));
  }
  if (__builtin_cpu_supports("avx512bw") != 0) {
    most = std::max(most, Lanes<64>::kAdditions / secondsOf(additions64));
  }
#endif
  return most;
}

}  // namespace

double peakOperations() {
  static const double kPeak = measured();
  return kPeak;
}

}  // namespace alg::bench
