// The effect road, with an answer for callers inside the library.
#pragma once

#include <cstdint>

namespace alg {

/// An NV21 frame in memory, with its strides in bytes.
struct Frame {
  uint8_t* y;
  uint8_t* uv;
  int width;
  int height;
  int yStride;
  int uvStride;
};

/// Runs the named effect on the frame, in place. Runs queue up behind one process-wide lock.
/// Returns false, with the frame untouched, when the work images don't fit into 2^31 - 1 bytes or
/// memory, or the pool can't start. A size below 1 does nothing.
bool runEffect(const char* effectName, const Frame& frame);

}  // namespace alg
