// Pictures to work on.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace alg::bench {

using Bytes = std::vector<uint8_t>;

constexpr std::size_t pixelsOf(int width, int height) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// Slow waves of colour, steps of brightness with sharp edges, and fine noise of brightness, as a
/// photo has them. Repeatable. Channels are B, G, R and, in a picture of four, an alpha of 0.
inline Bytes picture(int width, int height, int channels) {
  const auto wave = [](double x, double length) { return std::sin(x * 6.2831853 / length); };
  std::vector<int> columns;
  for (int x = 0; x < width; ++x) {
    for (const double length : {900.0, 1300.0, 1700.0}) {
      columns.push_back(static_cast<int>(45 * wave(x + length, length)));
    }
  }
  Bytes bytes;
  bytes.reserve(pixelsOf(width, height) * static_cast<std::size_t>(channels));
  uint32_t random = 1;
  for (int y = 0; y < height; ++y) {
    const int row = static_cast<int>(45 * wave(y, 1100));
    for (int x = 0; x < width; ++x) {
      random = random * 1664525 + 1013904223;
      const int step = (x / 190 + y / 150) % 2 * 24;
      const int noise = static_cast<int>(random >> 29);
      for (int c = 0; c < channels; ++c) {
        const int level = 116 + row + columns[static_cast<std::size_t>(x * 3 + c % 3)];
        bytes.push_back(c == 3 ? uint8_t{0} : static_cast<uint8_t>(level + step + noise));
      }
    }
  }
  return bytes;
}

}  // namespace alg::bench
