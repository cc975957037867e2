// How a source and a destination lie to one another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace alg {

/// Whether dst starts inside the source's bytes behind its first one. Results are then fed back
/// into pixels still to be read, and only a walk one pixel at a time does that right. Any other
/// overlap allows blocks that are read whole before they are written.
inline bool feedsBack(const uint8_t* src, const uint8_t* dst, std::size_t bytes) {
  const std::less<> before;  // unlike <, defined for pointers into different arrays
  return before(src, dst) && before(dst, src + bytes);
}

}  // namespace alg
