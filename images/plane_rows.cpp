// The definitions of the plane row kernels.
#include "images/plane_rows.h"

namespace alg {

void gatherRow(const uint8_t* samples, std::ptrdiff_t step, uint8_t* to, std::ptrdiff_t toStep,
               std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, samples += step, to += toStep) {
    *to = *samples;
  }
}

void interleaveRowsPlain(const uint8_t* first, const uint8_t* second, uint8_t* pairs,
                         std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    pairs[2 * i] = first[i];
    pairs[2 * i + 1] = second[i];
  }
}

void exchangePairsPlain(const uint8_t* from, uint8_t* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const uint8_t first = from[2 * i];
    to[2 * i] = from[2 * i + 1];
    to[2 * i + 1] = first;
  }
}

}  // namespace alg
