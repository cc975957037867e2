// What a batch may use of the machine: processors and memory.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <mutex>

namespace alg::tool {

/// The processors that this process may use at once: those of its affinity, or fewer when a control
/// group has a quota of processor time.
int processors(const std::filesystem::path& root = "/");

/// Bytes of memory that the machine and the process's control groups have left.
std::size_t memoryLeft(const std::filesystem::path& root = "/");

/// Memory that several threads share. Each says beforehand how much it will need.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::size_t bytes) : free_(bytes), whole_(bytes) {}

  /// A part of it, given back at the end.
  class Share {
   public:
    /// Waits until there is as much. One that needs more than all of it gets that.
    Share(MemoryBudget& budget, std::size_t bytes);
    ~Share();
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

   private:
    MemoryBudget& budget_;
    std::size_t bytes_;
  };

 private:
  std::mutex mutex_;
  std::condition_variable more_;
  std::size_t free_;
  std::size_t whole_;
};

}  // namespace alg::tool
