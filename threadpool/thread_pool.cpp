#include <android/log.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "libalgorithm/thread_pool.h"

namespace {

constexpr char kTag[] = "Defog";
constexpr int kDefaultPoolSize = 4;
constexpr int32_t kStarted = 0;
constexpr int32_t kStopped = 1;

#ifdef _LIBCPP_VERSION
constexpr std::size_t kQueueBytes = 48;
#else
constexpr std::size_t kQueueBytes = 80;  // libstdc++
#endif

}  // namespace

struct ThreadPool::Layout {
  static constexpr std::size_t kCond = 8 + sizeof(pthread_mutex_t) + 8;
  static constexpr std::size_t kThreads = kCond + sizeof(pthread_cond_t);
  static constexpr std::size_t kTasks = kThreads + 3 * sizeof(void*);
  static constexpr std::size_t kState = kTasks + kQueueBytes;
  static_assert(offsetof(ThreadPool, pool_size) == 0 && offsetof(ThreadPool, task_lock) == 8 &&
                offsetof(ThreadPool, task_cond) == kCond &&
                offsetof(ThreadPool, threads) == kThreads &&
                offsetof(ThreadPool, tasks) == kTasks &&
                offsetof(ThreadPool, pool_state) == kState && sizeof(ThreadPool) == kState + 8);
};

Task::Task(void (*taskFunction)(void*), void* taskArgument)
    : function(taskFunction), argument(taskArgument) {}

void Task::operator()() { function(argument); }

void Task::run() { (*this)(); }

TaskLock::TaskLock() { pthread_mutex_init(&mutex, nullptr); }

TaskLock::~TaskLock() {
  while (held != 0) {
  }
  held = 0;
  // The mutex is free here; callers rely on this order of calls nevertheless.
  pthread_mutex_unlock(&mutex);
  pthread_mutex_destroy(&mutex);
}

void TaskLock::lock() {
  pthread_mutex_lock(&mutex);
  held = 1;
}

void TaskLock::unlock() {
  held = 0;
  pthread_mutex_unlock(&mutex);
}

ThreadPool::ThreadPool() : ThreadPool(kDefaultPoolSize) {}

// Initially stopped: a pool that was never started has no thread to stop.
ThreadPool::ThreadPool(int size) : pool_size(size), pool_state(kStopped) {
  pthread_cond_init(&task_cond, nullptr);
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Constructed ThreadPool of size %d.", pool_size);
}

ThreadPool::~ThreadPool() {
  if (pool_state != kStopped) {
    destroy_threadpool();
  }
  pthread_cond_destroy(&task_cond);
}

int ThreadPool::initialize_threadpool() {
  pool_state = kStarted;
  threads.reserve(static_cast<std::size_t>(pool_size < 0 ? 0 : pool_size));
  for (int i = 0; i < pool_size; ++i) {
    pthread_t id;
    const int result = pthread_create(&id, nullptr, start_thread, this);
    if (result != 0) {
      __android_log_print(ANDROID_LOG_VERBOSE, kTag, "pthread_create() failed: %d.", result);
      return -1;
    }
    threads.push_back(id);
  }
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%d threads created by the thread pool",
                      pool_size);
  return 0;
}

int ThreadPool::destroy_threadpool() {
  task_lock.lock();
  const bool wasStarted = pool_state != kStopped;
  pool_state = kStopped;
  task_lock.unlock();
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Broadcasting STOP signal to all threads...");
  pthread_cond_broadcast(&task_cond);
  // A pool that could not start all its threads has fewer, and one that is stopped has joined them.
  const int running = wasStarted ? static_cast<int>(threads.size()) : 0;
  for (int i = 0; i < pool_size; ++i) {
    if (i < running) {
      void* ignored = nullptr;
      const int result = pthread_join(threads[static_cast<std::size_t>(i)], &ignored);
      if (result != 0) {
        __android_log_print(ANDROID_LOG_VERBOSE, kTag, "pthread_join() returned %d: %s", result,
                            std::strerror(errno));
      }
    }
    pthread_cond_broadcast(&task_cond);
  }
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, "%d threads exited from the thread pool",
                      pool_size);
  return 0;
}

void* ThreadPool::execute_thread() {
  for (;;) {
    task_lock.lock();
    while (pool_state != kStopped && tasks.empty()) {
      pthread_cond_wait(&task_cond, task_lock.native());
    }
    if (pool_state == kStopped) {
      task_lock.unlock();
      pthread_exit(nullptr);
    }
    Task* const task = tasks.front();
    tasks.pop_front();
    task_lock.unlock();
    (*task)();
  }
}

bool ThreadPool::queue(Task* task) noexcept {
  bool queued = true;
  task_lock.lock();
  try {
    tasks.push_back(task);
    pthread_cond_signal(&task_cond);
  } catch (const std::bad_alloc&) {
    queued = false;
  }
  task_lock.unlock();
  return queued;
}

int ThreadPool::add_task(Task* task) {
  if (!queue(task)) {
    // No lock is held here: exit() waits for an effect run, which needs it.
    std::puts("out of memory");
    std::exit(1);
  }
  return 0;
}

void* start_thread(void* pool) { return static_cast<ThreadPool*>(pool)->execute_thread(); }
