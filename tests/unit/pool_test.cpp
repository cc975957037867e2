// The thread pool, the strip worker and the process-wide pool.
#include <barrier>
#include <functional>

#include "guarded.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"
#include "log_capture.h"
#include "process.h"
#include "system_calls.h"

namespace {

/// The lines of a pool that is made and starts.
std::string startLog(int size) {
  return "2 Defog: Constructed ThreadPool of size " + std::to_string(size) +
         ".\n2 Defog: " + std::to_string(size) + " threads created by the thread pool\n";
}
std::string stopLog(int size) {
  return "2 Defog: Broadcasting STOP signal to all threads...\n2 Defog: " + std::to_string(size) +
         " threads exited from the thread pool\n";
}

std::vector<void*> ran;
std::atomic<bool> blocked;

void note(void* argument) { ran.push_back(argument); }
void call(void* function) { (*static_cast<std::function<void()>*>(function))(); }

void blockUntilStopIsLogged(void*) {
  for (blocked = true; loggedLines < 3;) sched_yield();
}

TEST(ThreadPool, OneThreadRunsTasksInQueueOrderAndStopLeavesTheRest) {
  takeLog();
  char arguments[200];
  std::vector<Task> tasks;
  for (char& argument : arguments) tasks.emplace_back(note, &argument);
  tasks[150] = Task(blockUntilStopIsLogged, nullptr);
  {
    ThreadPool pool(1);
    std::function<void()> addRest = [&] {  // to a queue that has been taken from
      for (Task& task : std::span(tasks).subspan(140)) EXPECT_EQ(pool.add_task(&task), 0);
    };
    tasks[100] = Task(call, &addRest);
    for (Task& task : std::span(tasks).first(140)) EXPECT_EQ(pool.add_task(&task), 0);
    EXPECT_EQ(pool.initialize_threadpool(), 0);
    while (!blocked) sched_yield();
    EXPECT_EQ(pool.destroy_threadpool(), 0);
    EXPECT_EQ(pool.destroy_threadpool(), 0);  // no thread is joined twice
  }
  EXPECT_EQ(ran.size(), 149u);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
  EXPECT_EQ(takeLog(), startLog(1) + stopLog(1) + stopLog(1));
  tasks[199]();
  tasks[198].run();
  EXPECT_EQ(ran.back(), arguments + 198);
}

TEST(ThreadPool, EverySizeStartsAndStopsItsThreads) {
  for (const int size : {0, 1, 16}) {
    const int before = settledThreads();
    takeLog();
    {
      ThreadPool pool(size);
      EXPECT_EQ(pool.initialize_threadpool(), 0);
      EXPECT_EQ(entries("task"), before + size);
    }  // stops by itself
    EXPECT_EQ(settledThreads(before), before);
    EXPECT_EQ(takeLog(), startLog(size) + stopLog(size));
    const ThreadPool neverStarted;
  }
}

TEST(GlobalPool, IsMadeOnceAndComesBackAfterDestroyOrAFailedStart) {
  HALThreadPoolDestroy();
  takeLog();
  const int before = settledThreads();
  for (const bool fails : {false, true, false}) {
    EXPECT_EQ(HALThreadPoolDestroy(), 0);  // there is none
    ThreadPool* half = nullptr;
    if (fails) {
      threadsUntilFailure = 2;
      EXPECT_EQ(HALThreadPoolInit(), -1);
      EXPECT_EQ(g_hal_threadpool_init, 0);
      EXPECT_NE(half = g_threadpool, nullptr);
      EXPECT_EQ(takeLog(),
                "2 Defog: Constructed ThreadPool of size 4.\n"
                "2 Defog: pthread_create() failed: 11.\n"  // EAGAIN
                "2 Defog: Failed to initialize g_threadpool!\n");
    }
    EXPECT_EQ(HALThreadPoolInit(), 0);
    ThreadPool* const pool = g_threadpool;
    EXPECT_NE(pool, half);
    EXPECT_EQ(HALThreadPoolInit(), 0);
    EXPECT_TRUE(g_threadpool == pool && g_hal_threadpool_init == 1);
    EXPECT_EQ(entries("task"), before + (fails ? 6 : 4));
    EXPECT_EQ(HALThreadPoolDestroy(), 0);
    EXPECT_TRUE(g_threadpool == nullptr && g_hal_threadpool_init == 0);
    delete half;  // joins the two threads that there are
    EXPECT_EQ(settledThreads(before), before);
    EXPECT_EQ(takeLog(), startLog(4) + stopLog(4) + (fails ? stopLog(4) : ""));
  }
}

TEST(GlobalPool, AnEffectNeedsNoThreads) {
  const auto run = [] {
    Bytes frame = noise(64 * 48 * 3 / 2);
    KAVRO_PrettyEffect_Function("PrettyBlue", "", &frame[0], &frame[64 * 48], 48, 64, 64, 64);
    return frame;
  };
  const Bytes good = run();
  for (int thread = 0; thread < 4; ++thread) {
    HALThreadPoolDestroy();
    threadsUntilFailure = thread;
    EXPECT_TRUE(same(run(), good));
    EXPECT_EQ(g_hal_threadpool_init, 0);
    ThreadPool* const half = g_threadpool;
    EXPECT_TRUE(same(run(), good));
    EXPECT_TRUE(g_hal_threadpool_init == 1 && g_threadpool != half);
    delete half;
  }
}

/// One piece of a job: notes how it was called.
struct Piece {
  int calls = 0;
  const void* param = nullptr;
  void* output = nullptr;
  std::thread::id thread;
};

void runPiece(const void* input, const void* param, void* output) {
  auto& piece = *static_cast<Piece*>(const_cast<void*>(input));
  piece = {piece.calls + 1, param, output, std::this_thread::get_id()};
}

void runWithThreeOthers(const void* input, const void* param, void* output) {
  static std::barrier<> meet(4);
  runPiece(input, param, output);
  meet.arrive_and_wait();
}

/// Runs a job and counts its pieces that were not run just once, on another thread, as described.
int wrongPieces(int count, ThreadPoolTaskFunc callback) {
  std::vector<Piece> pieces(asSize(count));
  std::vector<tagT_ThreadPoolTaskInput> inputs;
  for (Piece& piece : pieces) inputs.push_back({&piece, &piece.calls, &piece.thread});
  ThreadPoolWorker(g_threadpool, count, callback, inputs.data()).Work();
  return int(std::count_if(pieces.begin(), pieces.end(), [](const Piece& piece) {
    return piece.calls != 1 || piece.output != &piece.calls || piece.param != &piece.thread ||
           piece.thread == std::this_thread::get_id();
  }));
}

TEST(Worker, RunsEveryPieceOnceOnPoolThreadsWithItsArguments) {
  HALThreadPoolInit();
  EXPECT_EQ(wrongPieces(100, runPiece), 0);
  EXPECT_EQ(wrongPieces(4, runWithThreeOthers), 0);
  int wrong = 0;
  for (int job = 0; job < 10000; ++job) wrong += wrongPieces(job % 5, runPiece);
  EXPECT_EQ(wrong, 0);
  HALThreadPoolDestroy();
}

}  // namespace
