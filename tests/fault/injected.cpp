#include "injected.h"

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
std::atomic<long> live;
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
  if (block != nullptr) ++live;
  return block;
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
int takeErrorLines() { return errorLines.exchange(0); }

// These take the C library's place for everything in the process.
extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
  if (fails()) return nullptr;
  return block == nullptr ? counted(__libc_realloc(block, size)) : __libc_realloc(block, size);
}
void free(void* block) {
  if (block != nullptr) --live;
  __libc_free(block);
}

[[gnu::visibility("default")]] int __android_log_print(int priority, const char* /*tag*/,
                                                       const char* /*format*/, ...) {
  errorLines += priority == 6 ? 1 : 0;
  return 1;
}

}  // extern "C"
