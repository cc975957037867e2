#include "tools/bench.h"

#include <fmt/format.h>
#include <regex.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "tools/console.h"
#include "tools/files.h"
#include "tools/size.h"

namespace alg::tool {
namespace {

/// An extended regular expression that knows no case. The C library's: compilers warn about C++'s
/// in builds with sanitizers.
class Pattern {
 public:
  /// Throws WrongUse.
  explicit Pattern(const std::string& text) {
    if (regcomp(&compiled_, text.c_str(), REG_EXTENDED | REG_ICASE | REG_NOSUB) != 0) {
      throw WrongUse(fmt::format("--filter: \"{}\" is not a regular expression", text));
    }
  }
  ~Pattern() { regfree(&compiled_); }
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  bool isIn(const char* name) const { return regexec(&compiled_, name, 0, nullptr, 0) == 0; }

 private:
  regex_t compiled_{};
};

/// The median of one run's time, in seconds.
double timeOf(const bench::Routine& routine, const bench::Size& size, double budget) {
  bench::Images& images = bench::Images::of(routine.input, size);
  const auto once = [&] {
    const double start = bench::seconds(bench::clockOf(routine));
    routine.run(images.in.data(), images.out.data(), size.width, size.height);
    bench::clobberMemory();
    return bench::seconds(bench::clockOf(routine)) - start;
  };
  once();  // tables are built, caches filled, the pool started
  constexpr std::size_t kFewest = 3;
  std::vector<double> times;
  const double end = bench::seconds(CLOCK_MONOTONIC) + budget;
  while (times.size() < kFewest || bench::seconds(CLOCK_MONOTONIC) < end) {
    times.push_back(once());
    throwIfInterrupted();
  }
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

void printRow(const bench::Routine& routine, const bench::Size& size, double budget) {
  const double time = timeOf(routine, size, budget);
  const std::size_t moved = bench::bytesMoved(routine, size);
  fmt::print("{:<50} {:>9.2f} {:>7.2f} {:>10.2f}\n", routine.name, time * 1e3,
             static_cast<double>(moved) / time / 1e9, bench::secondsToCopy(moved) / time);
  std::fflush(stdout);
}

}  // namespace

void benchRoutines(const BenchRequest& request) {
  const Size size = parseSize(request.size, kLongestSide);
  const Pattern wanted(request.filter);
  std::vector<bench::Routine> chosen;
  std::ranges::copy_if(bench::routines(), std::back_inserter(chosen),
                       [&](const auto& routine) { return wanted.isIn(routine.name); });
  if (chosen.empty()) {
    throw WrongUse(fmt::format("no routine's name matches \"{}\"", request.filter));
  }
  fmt::print("{:<50} {:>9} {:>7} {:>10}\n", "ROUTINE", "MS", "GB/S", "OF MEMCPY");
  for (const bench::Routine& routine : chosen) {
    printRow(routine, {size.width, size.height}, request.seconds);
  }
}

}  // namespace alg::tool
