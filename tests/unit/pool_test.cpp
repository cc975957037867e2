// The thread pool, the strip worker, the process-wide pool and the runs on it. "Calls" are what
// they ask of the system: which calls in which order, on which threads, and what they do when calls
// fail or wake up for nothing.
#include <unistd.h>

#include <barrier>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/operations.h"
#include "effect/pipeline.h"
#include "guarded.h"
#include "images/job.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"
#include "log_capture.h"
#include "process.h"
#include "system_calls.h"
#include "threadpool/global_pool.h"

namespace {

std::vector<void*> ran;
std::atomic<bool> blocked;

void note(void* argument) { ran.push_back(argument); }

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
    for (Task& task : tasks) EXPECT_EQ(pool.add_task(&task), 0);
    EXPECT_EQ(pool.initialize_threadpool(), 0);
    while (!blocked) sched_yield();
    EXPECT_EQ(pool.destroy_threadpool(), 0);
    EXPECT_EQ(pool.destroy_threadpool(), 0);  // no thread is joined twice
  }
  EXPECT_EQ(ran.size(), 150u);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
  EXPECT_EQ(takeLog().find("join"), std::string::npos);
  tasks[199]();
  tasks[198].run();
  EXPECT_EQ(ran.back(), arguments + 198);
}

Bytes frameOf(int width, int height) { return noise(width * height * 3 / 2); }

bool runBlue(Bytes& frame, int width, int height) {
  return alg::runEffect({.name = "PrettyBlue"}, {&frame[0], &frame[asSize(width * height)], width,
                                                 height, width, width + width % 2}) ==
         alg::Outcome::kDone;
}

TEST(GlobalPool, IsMadeOnceAndComesBackAfterDestroyOrAFailedStart) {
  Bytes good = frameOf(64, 48);
  runBlue(good, 64, 48);
  HALThreadPoolDestroy();
  const int before = settledThreads();
  for (const int started : {4, 0, 3, 4}) {
    EXPECT_EQ(HALThreadPoolDestroy(), 0);  // there is none
    ThreadPool* half = nullptr;
    Bytes frame = frameOf(64, 48);
    if (started < 4) {
      takeLog();
      threadsUntilFailure = started;
      if (started == 0) {
        EXPECT_EQ(HALThreadPoolInit(), -1);
      } else {
        runBlue(frame, 64, 48);  // does without
        EXPECT_TRUE(same(frame, good));
      }
      EXPECT_EQ(g_hal_threadpool_init, 0);
      EXPECT_NE(half = g_threadpool, nullptr);
      EXPECT_TRUE(
          takeLog().starts_with("2 Defog: Constructed ThreadPool of size 4.\n"
                                "2 Defog: pthread_create() failed: 11.\n"  // EAGAIN
                                "2 Defog: Failed to initialize g_threadpool!\n"));
    }
    EXPECT_EQ(HALThreadPoolInit(), 0);
    ThreadPool* const pool = g_threadpool;
    EXPECT_NE(pool, half);
    EXPECT_EQ(HALThreadPoolInit(), 0);
    EXPECT_TRUE(g_threadpool == pool && g_hal_threadpool_init == 1);
    EXPECT_EQ(entries("task"), before + 4 + started % 4);
    EXPECT_EQ(HALThreadPoolDestroy(), 0);
    EXPECT_TRUE(g_threadpool == nullptr && g_hal_threadpool_init == 0);
    delete half;  // joins the threads that there are
    EXPECT_EQ(settledThreads(before), before);
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

/// Runs a job with memory for so many objects (-1: for all) and counts its pieces that were not run
/// just once, as described, and with memory on another thread.
int wrongPieces(ThreadPool& pool, int count, ThreadPoolTaskFunc callback, int objects = -1) {
  std::vector<Piece> pieces(asSize(count));
  std::vector<tagT_ThreadPoolTaskInput> inputs;
  for (Piece& piece : pieces) inputs.push_back({&piece, &piece.calls, &piece.thread});
  ThreadPoolWorker worker(&pool, count, callback, inputs.data());
  objectsUntilFailure = objects;
  worker.Work();
  objectsUntilFailure = -1;
  return int(std::ranges::count_if(pieces, [&](const Piece& piece) {
    return piece.calls != 1 || piece.output != &piece.calls || piece.param != &piece.thread ||
           (objects < 0 && piece.thread == std::this_thread::get_id());
  }));
}

TEST(Worker, RunsEveryPieceOnceOnPoolThreadsAndThoseWithoutMemoryItself) {
  for (const int threads : {1, 4}) {
    ThreadPool pool(threads);
    pool.initialize_threadpool();
    int wrong = threads == 4 ? wrongPieces(pool, 4, runWithThreeOthers) : 0;
    for (int job = 0; job < 10000; ++job) wrong += wrongPieces(pool, job % 5, runPiece);
    for (int objects = -1; objects < 8; ++objects) {  // more pieces than a block of the queue holds
      wrong += wrongPieces(pool, 300, runPiece, objects);
    }
    EXPECT_EQ(wrong, 0);
  }
}

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
  const int before = settledThreads();
  for (const int size : {0, 1, 4, 16}) {
    std::ranges::fill(watched, uint8_t{0xff});
    takeLog();
    // The lock comes after the size, its flag after the mutex.
    traceCalls("join", watched + 8 + sizeof(pthread_mutex_t));
    auto* const pool = size == 4 ? new (watched) ThreadPool : new (watched) ThreadPool(size);
    EXPECT_EQ(pool->initialize_threadpool(), 0);
    EXPECT_EQ(entries("task"), before + size);
    pool->add_task(&task);
    pool->~ThreadPool();
    traceCalls(nullptr);
    EXPECT_EQ(settledThreads(before), before);
    const std::string count = "2 Defog: " + std::to_string(size) + " threads ";
    EXPECT_EQ(takeLog(),
              "mutex_init\ncond_init\n2 Defog: Constructed ThreadPool of size " +
                  std::to_string(size) + ".\n" + times(size, "create\n") + count +
                  "created by the thread pool\n"
                  "mutex_lock\ncond_signal held\nmutex_unlock\n"  // the task
                  "mutex_lock\nmutex_unlock\n"
                  "2 Defog: Broadcasting STOP signal to all threads...\ncond_broadcast\n" +
                  times(size, joins + "cond_broadcast\n") + count +
                  "exited from the thread pool\ncond_destroy\nmutex_unlock\nmutex_destroy\n");
  }
  const ThreadPool neverStarted;
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
      if (line != nullptr && line == message) expected += std::string("2 Defog: ") + line + "\n";
    }
    takeLog();
    traceCalls(failing);
    auto* const worker = new (watched) ThreadPoolWorker(nullptr, 2, nullptr, nullptr);
    worker->OneTaskFinish();
    worker->OneTaskFinish();
    worker->~ThreadPoolWorker();
    traceCalls(nullptr);
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
  waits = 0, wakeUps = 3;
  auto* const pool = new (watched) ThreadPool(1);  // its thread finds no task
  pool->initialize_threadpool();
  while (waits < 4) sched_yield();
  pool->~ThreadPool();

  waits = 0, wakeUps = 1;
  HALThreadPoolInit();
  tagT_ThreadPoolTaskInput record{};
  auto* const worker = new (watched) ThreadPoolWorker(g_threadpool, 1, outlastAWakeUp, &record);
  worker->Work();
  EXPECT_TRUE(finished) << "Work() returned before its piece was done";
  returned = true;
  HALThreadPoolDestroy();
  worker->~ThreadPoolWorker();
}

/// Who has had a lock, one letter each: queues are filled while it is held, then emptied.
TEST(PoolLock, LetsPreviewsGoBeforePhotosThatCameFirst) {
  using Turn = alg::PoolLock::Turn;
  alg::PoolLock lock;
  std::string order;  // written with the lock held
  std::vector<std::thread> threads;
  const auto wait = [&](Turn turn, char letter) {
    const unsigned before = lock.waiting(turn);
    threads.emplace_back([&lock, &order, turn, letter] {
      lock.lock(turn);
      lock.lock();  // recursive: it is not queued behind those who wait
      order += letter;
      lock.unlock();
      lock.unlock();
    });
    while (lock.waiting(turn) == before) sched_yield();
  };
  {
    const alg::PhotoTurn band(lock);
    wait(Turn::kPhoto, 'a');
    wait(Turn::kPreview, 'A');
    wait(Turn::kPhoto, 'b');
    wait(Turn::kPreview, 'B');
  }
  {
    const alg::PhotoTurn nextBand(lock);  // behind all others
    order += 'c';
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(order, "ABabc");
}

std::atomic<int> piecesDone;

TEST(PoolLock, IsGivenToAPreviewBetweenTwoBandsOfAPhoto) {
  constexpr int kSide = 400, kPieces = 4;
  alg::Operation waiting = *alg::findOperation("sepia");
  waiting.run = [](const alg::Call&) {
    if (piecesDone++ == 0) {
      while (alg::poolLock().waiting(alg::PoolLock::Turn::kPreview) == 0) sched_yield();
    }
  };
  Bytes pixels = noise(4 * kSide * kSide, 1);
  const alg::Image photo{pixels.data(), kSide, kSide, 4 * kSide, false};
  alg::Job job;
  job.operation = &waiting;
  job.pieceRows = 2;
  int doneBefore = 0;
  std::thread preview([&] {
    while (piecesDone == 0) sched_yield();
    const std::lock_guard lock(alg::poolLock());
    doneBefore = piecesDone;
  });
  EXPECT_EQ(runJob(job, photo, photo), alg::JobOutcome::kDone);
  preview.join();
  EXPECT_EQ(doneBefore, kPieces) << "it waited for more than a band";
  EXPECT_EQ(piecesDone, kSide / job.pieceRows);
  HALThreadPoolDestroy();
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
      HALThreadPoolDestroy();
      if (imagesBefore) {
        EXPECT_EQ(fastcvPollInit(width, height), 0);
        EXPECT_EQ(g_hal_threadpool_init, 1);
      }
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
