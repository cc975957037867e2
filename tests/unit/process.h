// What the process has open, as the system counts it.
#pragma once

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

/// Entries of a folder below /proc/self, such as "task" or "fd".
inline int entries(const char* folder) {
  const std::filesystem::directory_iterator all(std::filesystem::path("/proc/self") / folder);
  return int(std::distance(all, {}));
}

/// Threads once there are as many as expected, or else their number stays the same: a joined one
/// may stay listed for a moment, on a busy machine a long one.
inline int settledThreads(int expected = 0) {
  using namespace std::chrono_literals;
  std::thread([] {}).join();  // sanitizers start a thread of their own beside the first one
  int count = entries("task");
  const int patience = expected == 0 ? 500 : 20000;
  for (int since = 0; since < patience && count != expected; ++since) {
    std::this_thread::sleep_for(1ms);
    if (const int now = entries("task"); now != count) count = now, since = 0;
  }
  return count;
}
