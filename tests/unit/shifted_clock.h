// The system's clock, set forward or back for the library alone (linked with --wrap=clock_gettime).
#pragma once

#include <atomic>

/// Seconds by which the library's clock is ahead of the one that files get their times from.
extern std::atomic<int> clockShift;

constexpr int kLater = 10;  // seconds: what was written just now is trusted

/// Sets it while it lives: ahead, a file that was written just now is an old one.
struct ShiftedClock {
  explicit ShiftedClock(int seconds) { clockShift = seconds; }
  ~ShiftedClock() { clockShift = 0; }
  ShiftedClock(const ShiftedClock&) = delete;
  ShiftedClock& operator=(const ShiftedClock&) = delete;
};
