// The checks of the fuzz targets: a failed one ends the process, as a sanitizer does.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "hwy/highway.h"

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

/// Runs `body` on each vector target of the machine, including the plain code where that is a
/// target.
template <class Body>
void onEachVectorTarget(Body body) {
  hwy::SetSupportedTargetsForTest(0);
  for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    body();
  }
  hwy::SetSupportedTargetsForTest(0);
}
