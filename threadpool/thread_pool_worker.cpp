#include <android/log.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "libalgorithm/thread_pool.h"

// Filled in by callers that were built separately from the library.
static_assert(offsetof(tagT_ThreadPoolTaskInput, input) == 0 &&
              offsetof(tagT_ThreadPoolTaskInput, output) == 8 &&
              offsetof(tagT_ThreadPoolTaskInput, param) == 16 &&
              sizeof(tagT_ThreadPoolTaskInput) == 24);

struct ThreadPoolWorker::Layout {
  static constexpr std::size_t kCount = sizeof(pthread_mutex_t) + sizeof(pthread_cond_t);
  static_assert(offsetof(ThreadPoolWorker, worker_lock) == 0 &&
                offsetof(ThreadPoolWorker, worker_cond) == sizeof(pthread_mutex_t) &&
                offsetof(ThreadPoolWorker, count) == kCount &&
                offsetof(ThreadPoolWorker, remaining) == kCount + 4 &&
                offsetof(ThreadPoolWorker, callback) == kCount + 8 &&
                offsetof(ThreadPoolWorker, inputs) == kCount + 16 &&
                offsetof(ThreadPoolWorker, pool) == kCount + 24 &&
                sizeof(ThreadPoolWorker) == kCount + 32);
};

namespace {

void logUnlessZero(int result, const char* message) {
  if (result != 0) {
    __android_log_print(ANDROID_LOG_VERBOSE, "Defog", "%s", message);
  }
}

/// A queued piece: what the pool runs, and the data for it.
struct Piece {
  ThreadPoolTaskInfo info;
  Task task;
};

/// Room for `count` pieces, or for none when memory is short.
std::vector<Piece> roomFor(int count) {
  std::vector<Piece> pieces;
  try {
    pieces.reserve(static_cast<std::size_t>(std::max(count, 0)));
  } catch (const std::bad_alloc&) {
    // The caller does without.
  }
  return pieces;
}

}  // namespace

ThreadPoolTaskInfo::ThreadPoolTaskInfo(ThreadPoolWorker* owner, ThreadPoolTaskFunc function,
                                       tagT_ThreadPoolTaskInput* record)
    : worker(owner), callback(function), input(record) {}

ThreadPoolWorker::ThreadPoolWorker(ThreadPool* workPool, int pieces, ThreadPoolTaskFunc function,
                                   tagT_ThreadPoolTaskInput* records)
    : count(pieces), remaining(pieces), callback(function), inputs(records), pool(workPool) {
  logUnlessZero(pthread_mutex_init(&worker_lock, nullptr),
                "##### Failed to initialize worker_lock!");
  logUnlessZero(pthread_cond_init(&worker_cond, nullptr),
                "##### Failed to initialize worker_cond!");
}

ThreadPoolWorker::~ThreadPoolWorker() {
  logUnlessZero(pthread_mutex_destroy(&worker_lock), "##### Failed to destroy worker_lock!");
  logUnlessZero(pthread_cond_destroy(&worker_cond), "##### Failed to destroy worker_cond!");
}

void ThreadPoolWorker::Work() {
  // The pool holds pointers to queued pieces: the array must never move.
  std::vector<Piece> pieces = roomFor(count);
  for (int i = 0; i < count; ++i) {
    ThreadPoolTaskInfo info(this, callback, &inputs[i]);
    if (pieces.size() < pieces.capacity()) {
      Piece& piece = pieces.emplace_back(Piece{info, Task(WorkerThreadBase, nullptr)});
      piece.task = Task(WorkerThreadBase, &piece.info);
      if (pool->queue(&piece.task)) {
        continue;
      }
    }
    WorkerThreadBase(&info);
  }
  pthread_mutex_lock(&worker_lock);
  while (remaining > 0) {
    pthread_cond_wait(&worker_cond, &worker_lock);
  }
  pthread_mutex_unlock(&worker_lock);
}

void ThreadPoolWorker::OneTaskFinish() {
  pthread_mutex_lock(&worker_lock);
  if (--remaining < 1) {
    pthread_cond_signal(&worker_cond);
  }
  pthread_mutex_unlock(&worker_lock);
}

void WorkerThreadBase(void* info) {
  const auto& piece = *static_cast<const ThreadPoolTaskInfo*>(info);
  piece.callback(piece.input->input, piece.input->param, piece.input->output);
  piece.worker->OneTaskFinish();
}
