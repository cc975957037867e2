// Clocks and medians.
#pragma once

#include <functional>

namespace alg::tool {

/// Medians of what two pieces of work take of this thread's CPU time, in seconds.
struct PairedTimes {
  double first;
  double second;
};

/// Runs both in turn for `budget` seconds, at least three times, after a run that does not count.
/// Throws Interrupted.
PairedTimes timePairs(const std::function<void()>& first, const std::function<void()>& second,
                      double budget);

}  // namespace alg::tool
