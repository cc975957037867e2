// Many calls: from several threads at once, and many in a row.
#include <malloc.h>

#include <atomic>
#include <chrono>

#include "libalgorithm/thread_pool.h"
#include "native_calls.h"
#include "process.h"

/// Discards the log of thousands of calls.
extern "C" [[gnu::visibility("default")]] int __android_log_print(int, const char*, const char*,
                                                                  ...) {
  return 1;
}

namespace {

/// A call's input, and what it gives on its own.
struct Expected {
  const Call& call;
  Bytes input, result;
};

std::vector<Expected> expectedOfAll() {
  FakeJni jni;
  std::vector<Expected> all;
  for (const Call& call : kCalls) {
    all.push_back({call, inputOf(call), {}});
    all.back().result = resultOf(call, jni, all.back().input);
  }
  return all;
}

TEST(Soak, CallsFromManyThreadsAreExact) {
  const NativesDevice device(ENGINE);
  const std::vector<Expected> all = expectedOfAll();
  const char* const seconds = std::getenv("SOAK_SECONDS");
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::seconds(seconds == nullptr ? 5 : std::atoi(seconds));
  std::atomic<int> calls = 0, wrong = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 6; ++t) {
    threads.emplace_back([&, t] {
      FakeJni jni;
      for (std::size_t i = t; std::chrono::steady_clock::now() < end; i += t + 1) {
        const Expected& expected = all[i % all.size()];
        wrong += resultOf(expected.call, jni, expected.input) != expected.result;
        ++calls;
        if (i % 97 == 0) HALThreadPoolDestroy();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(calls, 100);
}

/// Bytes in use on the heap. Resident memory would include that of an emulator, where there is one.
[[maybe_unused]] std::size_t heapBytes() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

TEST(Soak, TwentyThousandCallsLeaveNothingBehind) {
  const NativesDevice device(ENGINE);
  const std::vector<Expected> all = expectedOfAll();
  FakeJni jni;
  int wrong = 0;
  const auto run = [&](int calls) {
    for (int i = 0; i < calls; ++i) {
      const Expected& expected = all[asSize(i) % all.size()];
      wrong += resultOf(expected.call, jni, expected.input) != expected.result;
    }
  };
  run(1000);
  [[maybe_unused]] const std::size_t bytes = heapBytes();
  const int threads = settledThreads(), files = entries("fd");
  run(20000);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they keep freed blocks
  // Freed blocks that a thread caches count as used, so this varies a little. The smallest block,
  // leaked by each call of one kind, makes 64,000 bytes.
  EXPECT_LT(heapBytes(), bytes + 32000);
#endif
  EXPECT_EQ(settledThreads(threads), threads);
  EXPECT_EQ(entries("fd"), files);
  EXPECT_EQ(wrong, 0);
}

}  // namespace
