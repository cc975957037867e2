#include "tools/commands/timing.h"

#include <ctime>

#include <algorithm>
#include <vector>

#include "tools/shell/interrupts.h"

namespace alg::tool {
namespace {

double now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double timeOf(const std::function<void()>& work) {
  const double start = now(CLOCK_THREAD_CPUTIME_ID);
  work();
  asm volatile("" : : : "memory");  // as if all memory were read here: no work can be left out
  return now(CLOCK_THREAD_CPUTIME_ID) - start;
}

double median(std::vector<double>& times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

}  // namespace

PairedTimes timePairs(const std::function<void()>& first, const std::function<void()>& second,
                      double budget) {
  first();  // builds tables, touches fresh memory
  second();
  constexpr std::size_t kFewest = 3;
  std::vector<double> firsts;
  std::vector<double> seconds;
  const double end = now(CLOCK_MONOTONIC) + budget;
  while (firsts.size() < kFewest || now(CLOCK_MONOTONIC) < end) {
    firsts.push_back(timeOf(first));
    seconds.push_back(timeOf(second));
    throwIfInterrupted();
  }
  return {median(firsts), median(seconds)};
}

}  // namespace alg::tool
