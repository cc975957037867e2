// The four blurs as their definitions say, one pixel and one sample at a time.
#pragma once

#include "reference.h"

namespace ref {

inline int rampRadius(int peak, int i, int n) {
  const int c = n >> 1;
  if (c < 1) return 0;
  return std::min(peak * (i < c ? c - i : i - c) / c, peak);  // the peak outside the ramp
}

inline uint8_t mean(int sum, int n) { return uint8_t(sum * trunc(65536.0 / n) >> 16); }
inline int side(int r) { return 2 * r + 1; }

/// Where a blur's ramp of radii lies: its first entry belongs to the first column, or it runs down
/// the rows and row 0 has entry `offset` of `offset` + height + `extra`.
struct Ramp {
  bool alongRows = false;
  int offset = 0, extra = 0;
};

/// A box across, rounded down, then one of the same radius down; peak 24. Packed pixels (3
/// channels) are stored crossed, words (4) without alpha.
inline void blurSeparable(int channels, Ramp ramp, const uint8_t* src, uint8_t* dst, int width,
                          int height) {
  const int n = ramp.alongRows ? ramp.offset + height + ramp.extra : width;
  const auto means = [&](const uint8_t* from, int across, int down) {
    Bytes to;
    for (int i = 0; i < width * height * channels; ++i) {
      const int k = i % channels, x = i / channels % width, y = i / channels / width;
      const int r = rampRadius(24, ramp.alongRows ? ramp.offset + y : x, n);
      int sum = 0;
      for (int d = -r; d <= r; ++d) {
        const int xx = std::clamp(x + d * across, 0, width - 1);
        sum += from[(std::clamp(y + d * down, 0, height - 1) * width + xx) * channels + k];
      }
      to.push_back(mean(sum, side(r)));
    }
    return to;
  };
  const Bytes blurred = means(means(src, 1, 0).data(), 0, 1);
  for (int i = 0; i < width * height * channels; ++i) {
    const int k = i % channels;
    dst[channels == 3 ? i + 2 - 2 * k : i] = k == 3 ? uint8_t{0} : blurred[asSize(i)];
  }
}

/// Words, the whole square at once; peak 12.
inline void blurSquare(const uint8_t* src, uint8_t* dst, int width, int height) {
  for (int i = 0; i < width * height * 4; ++i) {
    const int k = i % 4, x = i / 4 % width, y = i / 4 / width, r = rampRadius(12, x, width);
    int sum = 4 * src[i];
    for (int yy = y - r; yy <= y + r; ++yy) {
      const uint8_t* row = src + 4 * width * std::clamp(yy, 0, height - 1) + k;
      for (int xx = x - r; xx <= x + r; ++xx) sum += row[4 * std::clamp(xx, 0, width - 1)];
    }
    dst[i] = k == 3 ? uint8_t{0} : mean(sum, side(r) * side(r) + 4);
  }
}

}  // namespace ref
