// How a source and a destination lie to one another.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/image_size.h"

namespace alg {

/// Whether dst starts inside the source's bytes behind its first one. Results are then fed back
/// into what is still to be read, and only a walk one pixel (or byte) at a time does that right.
/// Any other overlap allows blocks that are read whole before they are written.
inline bool feedsBack(const uint8_t* src, const uint8_t* dst, std::size_t bytes) {
  const std::less<> before;  // unlike <, defined for pointers into different arrays
  return before(src, dst) && before(dst, src + bytes);
}

/// How many packed pixels can be done at a time so that none is read after one of them was written.
inline std::size_t pixelsAtATime(const uint8_t* src, const uint8_t* dst, std::size_t pixels) {
  if (feedsBack(src, dst, kPackedBytes * pixels)) {
    return std::max(static_cast<std::size_t>(dst - src) / kPackedBytes, std::size_t{1});
  }
  return pixels;
}

}  // namespace alg
