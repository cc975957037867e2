#include "injected.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>

extern "C" {
// The C library's own.
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
}

namespace {

std::atomic<bool> armed, allLater;
std::atomic<int> left, failed;
std::atomic<long> live, bytes, most;
std::atomic<int> errorLines;

bool fails() {
  if (!armed) return false;
  const int number = left--;
  if (number > 0 || (number < 0 && !allLater)) return false;
  ++failed;
  errno = ENOMEM;
  return true;
}

void* counted(void* block) {
  if (block == nullptr) return block;
  ++live;
  const long now = bytes += long(malloc_usable_size(block));
  for (long before = most; before < now && !most.compare_exchange_weak(before, now);) continue;
  return block;
}

void uncount(void* block) {
  if (block == nullptr) return;
  --live;
  bytes -= long(malloc_usable_size(block));
}

}  // namespace

void failAllocation(int count, bool andAllLater) {
  left = count, failed = 0, allLater = andAllLater;
  armed = true;
}
bool stopFailing() {
  armed = false;
  return failed > 0;
}
long liveBlocks() { return live; }
void watchBytes() { bytes = 0, most = 0; }
long mostBytes() { return most; }
int takeErrorLines() { return errorLines.exchange(0); }

// These replace the C library's functions for everything in the process.
extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
  if (fails()) return nullptr;
  const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
  void* const grown = __libc_realloc(block, size);
  if (grown == nullptr && size > 0) return nullptr;  // the block is as it was
  if (block != nullptr) --live, bytes -= long(before);
  return counted(grown);
}
void free(void* block) {
  uncount(block);
  __libc_free(block);
}

[[gnu::visibility("default")]] int __android_log_print(int priority, const char* /*tag*/,
                                                       const char* /*format*/, ...) {
  errorLines += priority == 6 ? 1 : 0;
  return 1;
}

}  // extern "C"
