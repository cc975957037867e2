// What a batch may use of a machine, and files on file systems that know no nameless ones.
#include "tools/batch/resources.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tools/files/new_file.h"

namespace fs = std::filesystem;

namespace {

bool nameless = true;  // what open() below pretends

/// An empty folder, removed at the end.
struct Folder {
  fs::path path = fs::temp_directory_path() / ("resources_test." + std::to_string(getpid()));
  Folder() { fs::create_directories(path); }
  ~Folder() { fs::remove_all(path); }

  void write(const fs::path& name, const std::string& text) const {
    fs::create_directories((path / name).parent_path());
    std::ofstream(path / name) << text;
  }
};

}  // namespace

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  if (!nameless && (flags & O_TMPFILE) == O_TMPFILE) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return __real_open(path, flags, mode);
}

namespace alg::tool {
namespace {

TEST(Resources, QuotasOfControlGroupsCount) {
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
  const int own = CPU_COUNT(&set);
  struct Case {
    const char* groups;
    std::vector<std::pair<const char*, const char*>> files;
    int processors;
  };
  const std::vector<Case> cases = {
      {"0::/a/b\n", {{"a/b/cpu.max", "max 100000\n"}, {"a/cpu.max", "100000 100000\n"}}, 1},
      {"0::/a\n", {{"a/cpu.max", "100001 100000\n"}}, std::min(own, 2)},
      {"0::/\n", {{"cpu.max", "20000 100000\n"}}, 1},
      {"0::/a\n", {{"a/cpu.max", "max 100000\n"}}, own},
      {"0::/a\n", {}, own},
      {"7:memory:/m\n4:cpu,cpuacct:/c\n",
       {{"cpu/c/cpu.cfs_quota_us", "50000\n"}, {"cpu/c/cpu.cfs_period_us", "100000\n"}},
       1},
      {"4:cpu,cpuacct:/c\n",
       {{"cpu/c/cpu.cfs_quota_us", "-1\n"}, {"cpu/c/cpu.cfs_period_us", "100000\n"}},
       own},
  };
  for (const Case& one : cases) {
    const Folder root;
    root.write("proc/self/cgroup", one.groups);
    for (const auto& [name, text] : one.files) {
      root.write(fs::path("sys/fs/cgroup") / name, text);
    }
    EXPECT_EQ(processors(root.path), one.processors) << one.groups;
  }
  EXPECT_LE(processors(), own);
}

TEST(Resources, TheTightestLimitOfMemoryCounts) {
  const Folder root;
  root.write("proc/meminfo", "MemTotal: 9000 kB\nMemAvailable:    5000 kB\n");
  EXPECT_EQ(memoryLeft(root.path), 5000U * 1024);
  root.write("proc/self/cgroup", "0::/a/b\n");
  root.write("sys/fs/cgroup/a/b/memory.max", "max\n");
  root.write("sys/fs/cgroup/a/memory.max", "1000000\n");
  root.write("sys/fs/cgroup/a/memory.current", "700000\n");
  EXPECT_EQ(memoryLeft(root.path), 300000U);
  root.write("sys/fs/cgroup/a/memory.stat", "anon 5\ninactive_file 600000\n");
  EXPECT_EQ(memoryLeft(root.path), 900000U);
  root.write("proc/self/cgroup", "5:memory:/old\n");
  root.write("sys/fs/cgroup/memory/old/memory.limit_in_bytes", "50000\n");
  root.write("sys/fs/cgroup/memory/old/memory.usage_in_bytes", "60000\n");
  EXPECT_EQ(memoryLeft(root.path), 0U);
}

TEST(Resources, SharesTogetherStayWithinTheBudget) {
  MemoryBudget budget(100);
  std::atomic<int> used = 0;
  std::atomic<int> most = 0;
  {
    std::vector<std::jthread> threads;
    for (const int bytes : {40, 70, 30, 1000, 60, 25, 55, 90}) {
      threads.emplace_back([&budget, &used, &most, bytes] {
        for (int i = 0; i < 200; ++i) {
          const MemoryBudget::Share share(budget, static_cast<std::size_t>(bytes));
          const int now = used += std::min(bytes, 100);
          for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
          }
          std::this_thread::yield();
          used -= std::min(bytes, 100);
        }
      });
    }
  }
  EXPECT_LE(most, 100);
  EXPECT_GT(most, 40);
}

TEST(NewFile, TakesItsPlaceWithAndWithoutANamelessStart) {
  for (const bool able : {true, false}) {
    nameless = able;
    const Folder folder;
    const auto names = [&] {
      std::string all;
      for (const auto& entry : fs::directory_iterator(folder.path)) {
        all += entry.path().filename().string() + ";";
      }
      return all;
    };
    const auto put = [&](const std::string& text, bool replace) {
      NewFile file(folder.path);
      EXPECT_TRUE(writeAll(file.descriptor(),
                           {reinterpret_cast<const uint8_t*>(text.data()), text.size()}));
      EXPECT_EQ(names().find("photo;") == std::string::npos, replace);
      return file.moveTo(folder.path / "photo", replace);
    };
    EXPECT_TRUE(put("first", true));
    EXPECT_EQ(names(), "photo;");
    EXPECT_FALSE(put("second", false));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(names(), "photo;");
    folder.write("other", "");
    {
      NewFile file(folder.path);
      EXPECT_TRUE(file.moveTo(folder.path / "other", true));
    }
    { const NewFile left(folder.path); }
    std::string text;
    std::ifstream(folder.path / "photo") >> text;
    EXPECT_EQ(text, "first");
    EXPECT_EQ(names().size(), std::string("photo;other;").size());
  }
  nameless = true;
  EXPECT_LT(NewFile("/nowhere/at/all").descriptor(), 0);
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
}  // namespace alg::tool
