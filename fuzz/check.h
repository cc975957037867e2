// What fuzz targets hold against the library: a failed check ends the process, as a sanitizer does.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "tests/unit/each_target.h"

inline void expectThat(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

inline void expectSame(std::span<const uint8_t> got, std::span<const uint8_t> expected,
                       const char* what) {
  expectThat(got.size() == expected.size(), what);
  for (std::size_t i = 0; i < got.size(); ++i) {
    if (got[i] == expected[i]) continue;
    std::fprintf(stderr, "byte %zu of %zu is %d, not %d\n", i, got.size(), got[i], expected[i]);
    expectThat(false, what);
  }
}
