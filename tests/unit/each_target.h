// Runs code on every vector target.
#pragma once

#include "kernels/targets.h"

/// Runs `body` on each vector target of the machine, the plain code among them where it is one.
template <class Body>
void onEachVectorTarget(Body body) {
  for (const alg::Target target : alg::supportedTargets()) {
    alg::forceTarget(target);
    body();
  }
  alg::forceTarget(alg::Target::kNone);
}
