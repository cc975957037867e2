#include "tools/batch/resources.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

constexpr auto kUnlimited = std::numeric_limits<std::size_t>::max();

/// The folders of this process's control group and of those around it: of the one hierarchy, or of
/// a controller's own in the older kind.
std::vector<fs::path> controlGroups(const fs::path& root, const std::string& controller) {
  std::vector<fs::path> folders;
  std::ifstream groups(root / "proc/self/cgroup");  // "4:cpu,cpuacct:/a/b" or "0::/a/b"
  for (std::string line; std::getline(groups, line);) {
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (second == std::string::npos) {
      continue;
    }
    const std::string names = "," + line.substr(first + 1, second - first - 1) + ",";
    fs::path hierarchy = root / "sys/fs/cgroup";
    if (names != ",,") {
      if (names.find("," + controller + ",") == std::string::npos) {
        continue;
      }
      hierarchy /= controller;
    }
    fs::path group = line.substr(second + 2);
    for (; !group.empty(); group = group.parent_path()) {
      folders.push_back(hierarchy / group);
    }
    folders.push_back(hierarchy);
  }
  return folders;
}

/// A number in a file; nothing for "max" and for files that are not there.
std::optional<double> numberIn(const fs::path& path) {
  double number = 0;
  std::ifstream file(path);
  return file >> number ? std::optional(number) : std::nullopt;
}

/// The number after a word, in bytes when "kB" follows.
std::optional<std::size_t> entryOf(const fs::path& path, const std::string& name) {
  std::ifstream file(path);
  for (std::string word; file >> word;) {
    std::size_t number = 0;
    if (word == name && file >> number) {
      return file >> word && word == "kB" ? number * 1024 : number;
    }
  }
  return std::nullopt;
}

/// Processors' worth of time that a control group may take.
std::optional<double> quotaOf(const fs::path& group) {
  double quota = 0;
  double period = 0;
  std::ifstream both(group / "cpu.max");  // "150000 100000" or "max 100000"
  if (both >> quota >> period && period > 0) {
    return quota / period;
  }
  const auto older = numberIn(group / "cpu.cfs_quota_us");  // -1 for none
  const auto every = numberIn(group / "cpu.cfs_period_us");
  return older && every && *older > 0 && *every > 0 ? std::optional(*older / *every) : std::nullopt;
}

/// Bytes that a control group may still take. Its use counts files in the cache that would go.
std::size_t leftIn(const fs::path& group) {
  auto limit = numberIn(group / "memory.max");
  auto used = numberIn(group / "memory.current");
  std::string cache = "inactive_file";
  if (!limit) {
    limit = numberIn(group / "memory.limit_in_bytes");
    used = numberIn(group / "memory.usage_in_bytes");
    cache = "total_inactive_file";
  }
  if (!limit || !used || *limit >= 0x1p62) {
    return kUnlimited;
  }
  const auto cached = static_cast<double>(entryOf(group / "memory.stat", cache).value_or(0));
  return static_cast<std::size_t>(std::max(0.0, *limit - std::max(0.0, *used - cached)));
}

int affinity() {
  // As many as any system has; a set that is too small for it would be refused.
  constexpr int kMostProcessors = 16384;
  cpu_set_t* const set = CPU_ALLOC(kMostProcessors);
  const std::size_t size = CPU_ALLOC_SIZE(kMostProcessors);
  const bool known = set != nullptr && sched_getaffinity(0, size, set) == 0;
  const int count =
      known ? CPU_COUNT_S(size, set) : static_cast<int>(std::thread::hardware_concurrency());
  CPU_FREE(set);
  return std::max(1, count);
}

}  // namespace

int processors(const fs::path& root) {
  int count = affinity();
  for (const fs::path& group : controlGroups(root, "cpu")) {
    if (const auto quota = quotaOf(group)) {
      count = std::min(count, static_cast<int>(std::ceil(std::max(*quota, 1.0))));
    }
  }
  return count;
}

std::size_t memoryLeft(const fs::path& root) {
  std::size_t left = entryOf(root / "proc/meminfo", "MemAvailable:").value_or(kUnlimited);
  for (const fs::path& group : controlGroups(root, "memory")) {
    left = std::min(left, leftIn(group));
  }
  return left;
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::size_t bytes)
    : budget_(budget), bytes_(std::min(bytes, budget.whole_)) {
  std::unique_lock lock(budget_.mutex_);
  budget_.more_.wait(lock, [&] { return budget_.free_ >= bytes_; });
  budget_.free_ -= bytes_;
}

MemoryBudget::Share::~Share() {
  {
    const std::lock_guard lock(budget_.mutex_);
    budget_.free_ += bytes_;
  }
  budget_.more_.notify_all();
}

}  // namespace alg::tool
