// The library is unloaded while threads of it remain.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "libalgorithm/thread_pool.h"
#include "process.h"

static int threadsUntilFailure = -1;

/// Replaces the C library's function for the whole process.
extern "C" [[gnu::visibility("default")]] int pthread_create(pthread_t* id,
                                                             const pthread_attr_t* attributes,
                                                             void* (*entry)(void*),
                                                             void* argument) noexcept {
  static const auto real =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  if (threadsUntilFailure >= 0 && threadsUntilFailure-- == 0) return EAGAIN;
  return real(id, attributes, entry, argument);
}

namespace {

/// Loads the library, starts its pool and unloads it at once.
int startPool() {
  void* const library = dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  const auto start =
      reinterpret_cast<decltype(&HALThreadPoolInit)>(dlsym(library, "_Z17HALThreadPoolInitv"));
  const auto unload = reinterpret_cast<void (*)(void*, void*)>(dlsym(library, "JNI_OnUnload"));
  const int result = start();
  unload(nullptr, nullptr);  // as the virtual machine does
  dlclose(library);
  return result;
}

bool isLoaded() { return dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD) != nullptr; }

TEST(UnloadDeathTest, ParkedThreadsOfAHalfStartedPoolKeepTheirCode) {
  EXPECT_EXIT(
      {
        const int before = settledThreads();
        const bool stayed = startPool() != 0 || isLoaded();
        threadsUntilFailure = 3;
        const bool started = startPool() == 0;
        std::exit(stayed || started || !isLoaded() ? 1 : 10 + entries("task") - before);
      },
      testing::ExitedWithCode(13), "");
}

}  // namespace
