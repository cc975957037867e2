#include "threadpool/global_pool.h"

#include <android/log.h>

#include <new>

namespace {

constexpr char kTag[] = "Defog";

/// At the end of the process it waits for whoever has it: a run still reads its picture.
struct PoolMutex {
  std::recursive_mutex mutex;
  PoolMutex() = default;
  ~PoolMutex() { mutex.lock(); }
  PoolMutex(const PoolMutex&) = delete;
  PoolMutex& operator=(const PoolMutex&) = delete;
};

}  // namespace

std::recursive_mutex& alg::poolMutex() {
  static PoolMutex pool;
  return pool.mutex;
}

void alg::runOnPool(int count, ThreadPoolTaskFunc callback, tagT_ThreadPoolTaskInput* records) {
  if (g_hal_threadpool_init != 0) {
    ThreadPoolWorker(g_threadpool, count, callback, records).Work();
    return;
  }
  for (int i = 0; i < count; ++i) {
    callback(records[i].input, records[i].param, records[i].output);
  }
}

ThreadPool* g_threadpool = nullptr;
int32_t g_hal_threadpool_init = 0;

int HALThreadPoolInit() {
  const std::lock_guard lock(alg::poolMutex());
  if (g_hal_threadpool_init != 0) {
    return 0;
  }
  bool started = false;
  try {
    g_threadpool = new ThreadPool(4);
    started = g_threadpool->initialize_threadpool() == 0;
  } catch (const std::bad_alloc&) {
    // No thread of this pool runs.
  }
  if (!started) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Failed to initialize g_threadpool!");
    return -1;
  }
  g_hal_threadpool_init = 1;
  return 0;
}

int HALThreadPoolDestroy() {
  const std::lock_guard lock(alg::poolMutex());
  if (g_hal_threadpool_init != 1) {
    return 0;
  }
  if (g_threadpool->destroy_threadpool() == -1) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Failed to destroy g_threadpool!");
    return -1;
  }
  delete g_threadpool;
  g_threadpool = nullptr;
  g_hal_threadpool_init = 0;
  return 0;
}
