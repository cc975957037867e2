#include <android/log.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "libalgorithm/thread_pool.h"

namespace {

constexpr char kTag[] = "Defog";
constexpr int kDefaultPoolSize = 4;
// Room from the start, so that an effect run can't fail to queue its strips.
constexpr std::size_t kReservedTasks = 64;
constexpr int32_t kStarted = 0;
constexpr int32_t kStopped = 1;

}  // namespace

Task::Task(void (*taskFunction)(void*), void* taskArgument)
    : function(taskFunction), argument(taskArgument) {}

void Task::operator()() { function(argument); }

void Task::run() { (*this)(); }

TaskLock::TaskLock() { pthread_mutex_init(&mutex, nullptr); }

TaskLock::~TaskLock() {
  while (held != 0) {
  }
  held = 0;
  // The mutex is free here; callers rely on this order of calls all the same.
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

// Stopped at first: a pool that was never started has no thread to stop.
ThreadPool::ThreadPool(int size) : pool_size(size), pool_state(kStopped) {
  tasks.reserve(kReservedTasks);
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
  // Not pool_size: a pool that could not start all its threads has fewer, and one that is stopped
  // has joined them already.
  const std::size_t running = wasStarted ? threads.size() : 0;
  for (std::size_t i = 0; i < running; ++i) {
    void* ignored = nullptr;
    const int result = pthread_join(threads[i], &ignored);
    if (result != 0) {
      __android_log_print(ANDROID_LOG_VERBOSE, kTag, "pthread_join() returned %d: %s", result,
                          std::strerror(errno));
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
    Task* const task = tasks[taken++];
    if (taken == tasks.size()) {
      tasks.clear();
      taken = 0;
    }
    task_lock.unlock();
    (*task)();
  }
}

int ThreadPool::add_task(Task* task) {
  task_lock.lock();
  try {
    if (taken > kReservedTasks && taken > tasks.size() / 2) {  // a queue that is never empty
      tasks.erase(tasks.begin(), tasks.begin() + static_cast<std::ptrdiff_t>(taken));
      taken = 0;
    }
    tasks.push_back(task);
  } catch (const std::bad_alloc&) {
    std::puts("out of memory");
    std::exit(1);
  }
  pthread_cond_signal(&task_cond);
  task_lock.unlock();
  return 0;
}

void* start_thread(void* pool) { return static_cast<ThreadPool*>(pool)->execute_thread(); }
