// What is measured, and with which clock.
#pragma once

#include <time.h>

#include <cstddef>

#include "bench/routines.h"

namespace alg::bench {

struct Size {
  int width, height;
};

/// The bytes to work on. Those of the last size stay.
class Images {
 public:
  static Images& of(Input input, const Size& size);

  Bytes in, out;

 private:
  void fill(Input input, const Size& size);

  Input input_{};
  int width_ = 0;
  int height_ = 0;
};

/// The clock's time.
double seconds(clockid_t clock);

/// The pipeline has threads of its own, so what counts is the time that passes; of all others, what
/// the calling thread spends.
inline clockid_t clockOf(const Routine& routine) {
  return onPool(routine.look) ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID;
}

/// Bytes that the routine must read and write, each once.
inline std::size_t bytesMoved(const Routine& routine, const Size& size) {
  const auto pixels = static_cast<double>(pixelsOf(size.width, size.height));
  return static_cast<std::size_t>(routine.moved * pixels);
}

/// Seconds that memcpy takes to read and write `moved` bytes together; the best of a few.
double secondsToCopy(std::size_t moved);

/// Registers the natives' benchmarks.
void addNatives();

/// Registers those of JPEG.
void addJpeg();

/// Makes the compiler believe that all memory is read and written here.
inline void clobberMemory() { asm volatile("" : : : "memory"); }

}  // namespace alg::bench
