#include "threadpool/global_pool.h"

#include <android/log.h>

#include <mutex>
#include <new>

#include "platform/dynamic_loader.h"

namespace {

constexpr char kTag[] = "Defog";

/// At the end of the process it waits for whoever holds the lock: a run may still be reading its
/// picture.
struct WaitAtExit {
  WaitAtExit() = default;
  ~WaitAtExit() { alg::poolLock().lock(); }
  WaitAtExit(const WaitAtExit&) = delete;
  WaitAtExit& operator=(const WaitAtExit&) = delete;
};

constinit alg::PoolLock lockOfPool;

}  // namespace

alg::PoolLock& alg::poolLock() {
  static const WaitAtExit kWaitAtExit;
  return lockOfPool;
}

void alg::runRecordsOnPool(std::span<tagT_ThreadPoolTaskInput> records,
                           ThreadPoolTaskFunc callback) {
  if (g_hal_threadpool_init != 0) {
    ThreadPoolWorker(g_threadpool, static_cast<int>(records.size()), callback, records.data())
        .Work();
    return;
  }
  for (const tagT_ThreadPoolTaskInput& record : records) {
    callback(record.input, record.param, record.output);
  }
}

ThreadPool* g_threadpool = nullptr;
// Written with the lock held, but read without it. The C++ library of devices has no atomic_ref.
int32_t g_hal_threadpool_init = 0;

int HALThreadPoolInit() {
  // Without the lock: tasks on the pool may call this while the run that waits for them holds it.
  if (__atomic_load_n(&g_hal_threadpool_init, __ATOMIC_ACQUIRE) != 0) {
    return 0;
  }
  const std::lock_guard lock(alg::poolLock());
  if (g_hal_threadpool_init != 0) {
    return 0;
  }
  bool started = false;
  try {
    g_threadpool = new ThreadPool(4);
    started = g_threadpool->initialize_threadpool() == 0;
    if (!started) {
      alg::keepLibraryLoaded();  // the threads that did start never end
    }
  } catch (const std::bad_alloc&) {
    // No thread of this pool runs.
  }
  if (!started) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Failed to initialize g_threadpool!");
    return -1;
  }
  __atomic_store_n(&g_hal_threadpool_init, 1, __ATOMIC_RELEASE);
  return 0;
}

int HALThreadPoolDestroy() {
  const std::lock_guard lock(alg::poolLock());
  if (g_hal_threadpool_init != 1) {
    return 0;
  }
  if (g_threadpool->destroy_threadpool() == -1) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Failed to destroy g_threadpool!");
    return -1;
  }
  delete g_threadpool;
  g_threadpool = nullptr;
  __atomic_store_n(&g_hal_threadpool_init, 0, __ATOMIC_RELEASE);
  return 0;
}
