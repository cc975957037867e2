#include <android/log.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "libalgorithm/thread_pool.h"

// Filled in by callers that were built apart from the library.
static_assert(offsetof(tagT_ThreadPoolTaskInput, input) == 0 &&
              offsetof(tagT_ThreadPoolTaskInput, output) == 8 &&
              offsetof(tagT_ThreadPoolTaskInput, param) == 16 &&
              sizeof(tagT_ThreadPoolTaskInput) == 24);

namespace {

void logUnlessZero(int result, const char* message) {
  if (result != 0) {
    __android_log_print(ANDROID_LOG_VERBOSE, "Defog", "%s", message);
  }
}

/// A queued piece: what the pool runs and what that needs to know.
struct Piece {
  ThreadPoolTaskInfo info;
  Task task;
};

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
  std::vector<Piece> pieces;
  // Queued pieces are pointed at by the pool: the array must never move.
  pieces.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (int i = 0; i < count; ++i) {
    Piece& piece = pieces.emplace_back(
        Piece{ThreadPoolTaskInfo(this, callback, &inputs[i]), Task(WorkerThreadBase, nullptr)});
    piece.task = Task(WorkerThreadBase, &piece.info);
    pool->add_task(&piece.task);
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
