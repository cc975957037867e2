// What pool and pipeline ask of the system: which calls in which order, on which threads, and what
// they do when calls fail or wake up for nothing.
#include <unistd.h>

#include <new>

#include "effect/pipeline.h"
#include "guarded.h"
#include "libalgorithm/thread_pool.h"
#include "log_capture.h"
#include "system_calls.h"

namespace {

constexpr char kLog[] = "2 Defog: ";
alignas(16) unsigned char memory[512];  // of the object that is watched

void nothing(void*) {}

/// As many times what a call and the line of its failure leave.
std::string times(int count, const std::string& lines) {
  std::string all;
  while (count-- > 0) all += lines;
  return all;
}

TEST(Calls, APoolsLife) {
  static Task task(nothing, nullptr);
  const std::string joins =
      "join\n2 Defog: pthread_join() returned 11: No such file or directory\n";
  std::fill(std::begin(memory), std::end(memory), 0xff);
  takeLog();
  {
    // The lock comes after the size, its flag after the mutex.
    const CallTrace trace(memory, sizeof(ThreadPool), "join", memory + 8 + sizeof(pthread_mutex_t));
    auto* const pool = new (memory) ThreadPool;
    pool->initialize_threadpool();
    pool->add_task(&task);
    pool->~ThreadPool();
  }
  EXPECT_EQ(takeLog(),
            "mutex_init\ncond_init\n2 Defog: Constructed ThreadPool of size 4.\n" +
                times(4, "create\n") + "2 Defog: 4 threads created by the thread pool\n" +
                "mutex_lock\ncond_signal held\nmutex_unlock\n"  // the task
                "mutex_lock\nmutex_unlock\n2 Defog: Broadcasting STOP signal to all threads...\n" +
                "cond_broadcast\n" + times(4, joins + "cond_broadcast\n") +
                "2 Defog: 4 threads exited from the thread pool\n"
                "cond_destroy\nmutex_unlock\nmutex_destroy\n");
}

TEST(Calls, AWorkersLifeWithEachOfItsFailures) {
  const std::pair<const char*, const char*> calls[] = {
      {"mutex_init", "##### Failed to initialize worker_lock!"},
      {"cond_init", "##### Failed to initialize worker_cond!"},
      {"mutex_lock", nullptr},  // the first piece is finished
      {"mutex_unlock", nullptr},
      {"mutex_lock", nullptr},
      {"cond_signal", nullptr},
      {"mutex_unlock", nullptr},
      {"mutex_destroy", "##### Failed to destroy worker_lock!"},
      {"cond_destroy", "##### Failed to destroy worker_cond!"}};
  for (const auto& [failing, message] : calls) {
    std::string expected;
    for (const auto& [call, line] : calls) {
      expected += std::string(call) + "\n";
      if (line != nullptr && line == message) expected += std::string(kLog) + line + "\n";
    }
    takeLog();
    {
      const CallTrace trace(memory, sizeof(ThreadPoolWorker), failing);
      auto* const worker = new (memory) ThreadPoolWorker(nullptr, 2, nullptr, nullptr);
      worker->OneTaskFinish();
      worker->OneTaskFinish();
      worker->~ThreadPoolWorker();
    }
    EXPECT_EQ(takeLog(), expected) << failing;
  }
}

std::atomic<bool> finished, returned;

/// Isn't done before the one who waits for it has woken up for nothing, or has left.
void outlastAWakeUp(const void*, const void*, void*) {
  while (waits < 2 && !returned) sched_yield();
  finished = true;
}

TEST(Calls, WakingUpForNothingIsNoNews) {
  HALThreadPoolDestroy();
  wakeUpForNothing(memory, sizeof memory, 3);
  auto* const pool = new (memory) ThreadPool(1);  // its thread finds no task
  pool->initialize_threadpool();
  while (waits < 4) sched_yield();
  pool->~ThreadPool();

  wakeUpForNothing(memory, sizeof memory, 1);
  HALThreadPoolInit();
  tagT_ThreadPoolTaskInput record{};
  auto* const worker = new (memory) ThreadPoolWorker(g_threadpool, 1, outlastAWakeUp, &record);
  worker->Work();
  EXPECT_TRUE(finished) << "Work() returned before its piece was done";
  returned = true;
  HALThreadPoolDestroy();
  worker->~ThreadPoolWorker();
}

Bytes frameOf(int width, int height) { return noise(width * height * 3 / 2); }

bool runBlue(Bytes& frame, int width, int height) {
  return alg::runEffect({.name = "PrettyBlue"}, {&frame[0], &frame[asSize(width * height)], width,
                                                 height, width, width + width % 2}) ==
         alg::Outcome::kDone;
}

std::pair<int, int> imagesAtLookup;

TEST(Calls, RunsWorkOnThePoolWithTheirImagesThere) {
  constexpr int kSteps = 3 * 4;  // conversion, effect and conversion back of four strips
  onLookup = [] {
    imagesAtLookup = {gCLAHE_Rgb_Buffer_in != nullptr, gCLAHE_Rgb_Buffer_out != nullptr};
  };
  for (const auto& [width, height] : {std::pair{64, 48}, {63, 48}}) {  // in one pass, in three
    Bytes good = frameOf(width, height + 1);
    EXPECT_TRUE(runBlue(good, width, height));
    for (const bool imagesBefore : {false, true}) {
      if (imagesBefore) fastcvPollInit(width, height);
      const std::unique_ptr<uint8_t, decltype(&std::free)> in(gCLAHE_Rgb_Buffer_in, std::free),
          out(gCLAHE_Rgb_Buffer_out, std::free);  // not the run's to free
      for (const bool roomForImages : {true, false}) {
        const bool runs = roomForImages || width % 2 == 0;
        refusedBlock = roomForImages ? 0 : asSize(width * height * 3);
        takeStripThreads();
        imagesAtLookup = {};
        Bytes frame = frameOf(width, height + 1);
        EXPECT_EQ(runBlue(frame, width, height), runs);
        refusedBlock = 0;
        EXPECT_TRUE(same(frame, runs ? good : frameOf(width, height + 1)));
        EXPECT_EQ(imagesAtLookup, std::pair(+roomForImages, +roomForImages));
        EXPECT_TRUE(gCLAHE_Rgb_Buffer_in == nullptr && gCLAHE_Rgb_Buffer_out == nullptr);
        const auto threads = takeStripThreads();
        EXPECT_EQ(std::ssize(threads), runs ? kSteps : 0);
        EXPECT_EQ(std::ranges::count(threads, std::this_thread::get_id()), 0);
      }
    }
  }
  onLookup = [] {};
  HALThreadPoolDestroy();
}

void countCall(const void*, const void*, void* output) { ++*static_cast<int*>(output); }

TEST(Calls, WorkWithoutMemoryIsDoneOnTheCallingThread) {
  constexpr int kPieces = 300;  // more than a block of the queue holds
  for (const int threads : {1, 4}) {
    ThreadPool pool(threads);
    pool.initialize_threadpool();
    for (int objects = 0; objects < 8; ++objects) {
      std::vector<int> calls(kPieces);
      std::vector<tagT_ThreadPoolTaskInput> records;
      for (int& call : calls) records.push_back({nullptr, &call, nullptr});
      ThreadPoolWorker worker(&pool, kPieces, countCall, records.data());
      objectsUntilFailure = objects;
      worker.Work();
      objectsUntilFailure = -1;
      EXPECT_EQ(std::ranges::count(calls, 1), kPieces);
    }
  }
}

TEST(CallsDeathTest, ATaskWithoutMemoryEndsTheProcess) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        static Task task(nothing, nullptr);
        ThreadPool pool(0);
        objectsUntilFailure = 0;
        for (;;) pool.add_task(&task);
      },
      testing::ExitedWithCode(1), "^out of memory\n$");
}

std::atomic<int> asked;

void askDuringARun(void*) {
  while (loggedLines == 0) sched_yield();  // the run has looked its effect up
  asked += HALThreadPoolInit() == 0;
}

TEST(CallsDeathTest, TasksMayAskForThePoolDuringARun) {
  HALThreadPoolDestroy();  // the child has the thread that forks only
  EXPECT_EXIT(
      {
        alarm(60);
        HALThreadPoolInit();
        takeLog();
        std::vector<Task> tasks(4, Task(askDuringARun, nullptr));
        for (Task& task : tasks) g_threadpool->add_task(&task);
        Bytes frame = frameOf(64, 48);
        runBlue(frame, 64, 48);
        HALThreadPoolDestroy();
        std::exit(asked);
      },
      testing::ExitedWithCode(4), "");
}

}  // namespace
