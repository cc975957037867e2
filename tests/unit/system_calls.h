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

/// Room for the object that is watched.
alignas(16) extern unsigned char watched[512];
/// From now on, calls of pthread functions by this thread that concern the watched object are lines
/// of the log, without "pthread_".
/// @param failing  a call that does its work, but says EAGAIN and sets errno to ENOENT; null: no
///                 more lines
/// @param held     a flag that is shown (as " held") where its mutex is held
void traceCalls(const char* failing, const volatile uint8_t* held = nullptr);

/// Waits on the watched object's condition so far, and how many of them return at once.
extern std::atomic<int> waits, wakeUps;

/// The threads that conversions and curves of strips were done on since the last call.
std::vector<std::thread::id> takeStripThreads();
/// Run where a run looks its effect up.
extern void (*onLookup)();
