// Runs code on every vector target.
#pragma once

#include "hwy/highway.h"

/// Runs `body` on each vector target of the machine, the plain code among them where it is one.
template <class Body>
void onEachVectorTarget(Body body) {
  hwy::SetSupportedTargetsForTest(0);
  for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    body();
  }
  hwy::SetSupportedTargetsForTest(0);
}
