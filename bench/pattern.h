// Bytes to work on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace alg::bench {

/// Repeatable, without long runs of equal bytes.
inline std::vector<uint8_t> pattern(std::size_t bytes) {
  std::vector<uint8_t> data(bytes);
  for (std::size_t i = 0; i < bytes; ++i) {
    data[i] = static_cast<uint8_t>(i * 37 + (i >> 9));
  }
  return data;
}

}  // namespace alg::bench
