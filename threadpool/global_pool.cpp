// The process-wide pool.
#include <android/log.h>

#include "libalgorithm/thread_pool.h"

namespace {
constexpr char kTag[] = "Defog";
}

ThreadPool* g_threadpool = nullptr;
int32_t g_hal_threadpool_init = 0;

int HALThreadPoolInit() {
  if (g_hal_threadpool_init != 0) {
    return 0;
  }
  g_threadpool = new ThreadPool(4);
  if (g_threadpool->initialize_threadpool() == -1) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag, "Failed to initialize g_threadpool!");
    return -1;
  }
  g_hal_threadpool_init = 1;
  return 0;
}

int HALThreadPoolDestroy() {
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
