// Resize as its formula says, one channel of one pixel at a time.
#pragma once

#include "reference.h"

namespace ref {

inline void resize(uint32_t* dst, int dw, int dh, const uint32_t* src, int sw, int sh) {
  const int xStep = int(int64_t(double(sw) / dw * 65536.0));
  const int yStep = int(int64_t(double(sh) / dh * 65536.0));
  for (int j = 0, fy = 0; j < dh; ++j, fy += yStep) {
    for (int i = 0, fx = 0; i < dw; ++i, fx += xStep) {
      const int sx = std::clamp(fx >> 16, 0, sw - 1), sy = std::clamp(fy >> 16, 0, sh - 1);
      const int idx = sy * sw + sx, right = idx + 1 < (j + 1) * sw ? idx + 1 : idx;
      uint32_t word = 0;
      for (const int bit : {16, 8, 0}) {
        const auto mix = [&, bit](int at, int next) {
          while (at >= sw * sh) at -= sw;
          while (next >= sw * sh) next -= sw;
          const int a = src[at] >> bit & 255, b = src[next] >> bit & 255, f = fx & 0xFFFF;
          return (a * (65535 - f) + b * f) >> 16;
        };
        const int top = mix(idx, right), bottom = mix(idx + sw, right + sw), f = fy & 0xFFFF;
        word += uint32_t((top * (65535 - f) + bottom * f) >> 16) << bit;
      }
      dst[j * dw + i] = word;
    }
  }
}

}  // namespace ref
