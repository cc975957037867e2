// Clocks and medians.
#pragma once

#include <functional>

namespace alg::tool {

/// Medians of what two pieces of work take of this thread's CPU time, in seconds.
struct PairedTimes {
  double first;
  double second;
};

/// Does both in turn for `budget` seconds, three times at least, and once before. Throws
/// Interrupted.
PairedTimes timePairs(const std::function<void()>& first, const std::function<void()>& second,
                      double budget);

}  // namespace alg::tool
