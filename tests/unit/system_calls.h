// Stands between the library and the system's threads and memory (linked in with --wrap): calls
// fail, wake up for nothing and are written down on demand.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

/// Threads that still start until one doesn't; -1: all do.
extern std::atomic<int> threadsUntilFailure;
/// There is never so much memory in one block, to the byte.
extern std::atomic<std::size_t> refusedBlock;
/// Objects that this thread still makes until there is no memory for any; -1: there is.
extern thread_local int objectsUntilFailure;

/// While it lives, calls of pthread functions by this thread that concern an object are lines of
/// the log, without "pthread_".
class CallTrace {
 public:
  /// @param failing  a call that does its work, but says EAGAIN and sets errno to ENOENT
  /// @param held     a flag that is shown (as " held") where its mutex is held
  CallTrace(const void* object, std::size_t size, const char* failing,
            const volatile uint8_t* held = nullptr);
  ~CallTrace();
  CallTrace(const CallTrace&) = delete;
  CallTrace& operator=(const CallTrace&) = delete;
};

/// The next waits on a condition of this object return at once, so many times.
void wakeUpForNothing(const void* object, std::size_t size, int times);
/// Waits on that object since then.
extern std::atomic<int> waits;

/// The threads that the road's callbacks and PrettyBlue were called on since the last call.
std::vector<std::thread::id> takeStripThreads();
/// Run where a run looks its effect up.
extern void (*onLookup)();
