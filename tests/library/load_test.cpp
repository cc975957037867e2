// The built library through the dynamic loader, as an application has it.
#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <filesystem>

#include "guarded.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"

namespace {

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

int entries(const char* folder) {
  return int(std::distance(std::filesystem::directory_iterator(folder), {}));
}

int threads() { return entries("/proc/self/task"); }

/// A joined thread may still be listed for a moment.
bool threadsBecome(int count) {
  for (int wait = 0; wait < 5000 && threads() != count; ++wait) usleep(1000);
  return threads() == count;
}

TEST(Load, FiftyLoadsAndUnloadsLeaveNothingBehind) {
  const int threadsBefore = threads(), filesBefore = entries("/proc/self/fd");
  Bytes frame;
  std::size_t heap = 0;
  for (int round = 0; round < 50; ++round) {
    {
      const Library library;
      EXPECT_EQ(*library.find<decltype(g_hal_threadpool_init)>("g_hal_threadpool_init"), 0);
      const Bytes result = library.frameAfterAnEffect();
      if (round == 0) frame = result;
      EXPECT_TRUE(same(result, frame));
      EXPECT_EQ(threads(), threadsBefore + 4);
      library.find<decltype(HALThreadPoolDestroy)>("_Z20HALThreadPoolDestroyv")();
      EXPECT_TRUE(threadsBecome(threadsBefore));
    }
    EXPECT_EQ(dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    if (round == 9)
      heap = mallinfo2().uordblks;  // what the loader keeps for itself is there by now
  }
  EXPECT_FALSE(same(frame, noise(int(frame.size()))));
  EXPECT_EQ(entries("/proc/self/fd"), filesBefore);
  EXPECT_LE(mallinfo2().uordblks, heap + 1024);
}

TEST(Load, AProcessWithALivePoolEndsCleanly) {
  for (int round = 0; round < 20; ++round) {
    EXPECT_EXIT(
        {
          const int before = threads();
          const Library library;
          library.frameAfterAnEffect();
          std::exit(threads() - before);
        },
        testing::ExitedWithCode(4), "^$");
  }
}

}  // namespace
