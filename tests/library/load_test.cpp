// The built library through the dynamic loader, as an application uses it.
#include <dlfcn.h>
#include <malloc.h>

#include <cerrno>

#include "guarded.h"
#include "libalgorithm/effect_pipeline.h"
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

bool isLoaded() { return dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD) != nullptr; }

/// The library while it is loaded, with what an effect run needs.
class Library {
 public:
  Library() : handle_(dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) ADD_FAILURE() << dlerror();
  }
  ~Library() { EXPECT_EQ(dlclose(handle_), 0); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  template <class Type>
  Type* find(const char* name) const {
    void* const symbol = dlsym(handle_, name);
    EXPECT_NE(symbol, nullptr) << name;
    return reinterpret_cast<Type*>(symbol);
  }

  /// Runs the effect on a frame of noise.
  Bytes frameAfterAnEffect() const {
    Bytes frame = noise(64 * 48 * 3 / 2);
    find<decltype(KAVRO_PrettyEffect_Function)>("KAVRO_PrettyEffect_Function")(
        "PrettyBlue", "", frame.data(), &frame[64 * 48], 48, 64, 64, 64);
    return frame;
  }

 private:
  void* handle_;
};

TEST(Load, ManyLoadsAndUnloadsLeaveNothingBehind) {
  const int threads = settledThreads(), files = entries("fd");
  Bytes frame;
  std::size_t heap = 0;
  for (int round = 0; round < 160; ++round) {
    {
      const Library library;
      EXPECT_EQ(*library.find<decltype(g_hal_threadpool_init)>("g_hal_threadpool_init"), 0);
      const Bytes result = library.frameAfterAnEffect();
      if (round == 0) frame = result;
      EXPECT_TRUE(same(result, frame));
      EXPECT_EQ(entries("task"), threads + 4);
      library.find<decltype(HALThreadPoolDestroy)>("_Z20HALThreadPoolDestroyv")();
      EXPECT_EQ(settledThreads(threads), threads);
    }
    EXPECT_FALSE(isLoaded());
    // By now the loader's own tables have grown for the last time: that happens once, by a
    // kilobyte, before the fortieth load.
    if (round == 59) heap = mallinfo2().uordblks;
  }
  EXPECT_FALSE(same(frame, noise(int(frame.size()))));
  EXPECT_EQ(entries("fd"), files);
  EXPECT_LE(mallinfo2().uordblks, heap + 1024);
}

TEST(Load, AProcessWithALivePoolEndsCleanly) {
  for (int round = 0; round < 20; ++round) {
    EXPECT_EXIT(
        {
          const int before = entries("task");
          const Library library;
          library.frameAfterAnEffect();
          std::exit(entries("task") - before);
        },
        testing::ExitedWithCode(4), "^$");
  }
}

/// Loads the library, starts its pool and unloads it at once.
int startPool() {
  const Library library;
  const int result = library.find<decltype(HALThreadPoolInit)>("_Z17HALThreadPoolInitv")();
  library.find<void(void*, void*)>("JNI_OnUnload")(nullptr,
                                                   nullptr);  // as the virtual machine does
  return result;
}

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
