// Fisheye and FillLightFix as they are defined: one pixel and its mirror images at a time.
#pragma once

#include <algorithm>
#include <cstdint>

namespace ref {

inline int series(int t) {
  const int tt = t * t, t3 = tt >> 12;
  return (((t >> 1) + 4095 - (tt >> 15) + ((t3 * t) >> 16) - ((t3 * t3 * 5) >> 19)) * 2896) >> 12;
}

/// Copies that would start outside are left out.
inline void fisheye(uint8_t* src, uint8_t* dst, int w, int h) {
  const int S = w > h ? 4096 : int(4096.0 * float(double(w) / double(h)));
  const int M = w > h ? 11264 : 2 * S + 3072, a = (M * 2326) >> 14, a2 = (a * a) >> 10;
  const int P =
      (((a * a2) >> 10) * 442 - ((a2 * a2) >> 10) * 22 - a2 * 3394 + a * 12420 - 22481469) >> 12;
  const int K = w > h ? 4147 : P == 0 ? 0 : 9625600 / -P;
  for (int y = 0; y <= h >> 1; ++y) {
    int sum = -(w >> 1) * (16777216 / w);
    for (int x = 0; x <= w >> 1; ++x, sum += 16777216 / w) {
      const int ny = ((y - (h >> 1)) * (16777216 / h)) >> 12, nx = sum >> 12;
      const int yy = (((h << 12) / w) * ((S * ny) >> 12)) >> 12, xx = (nx * S) >> 12;
      const int r2 = (yy * yy + xx * xx) >> 12, r = series(2 * r2 - 4095), u = 4095 - r;
      const int u2 = (u * u) >> 12;
      const int inv = 8190 - r + u2 + ((u2 * u) >> 12) + ((u2 * u2) >> 12);
      const int q = series(2 * (1782 - r2) - 4095), X = (((q * inv) >> 12) * M) >> 12;
      const int v = (X * X) >> 14, vx = (v * X) >> 12, vv = (v * v) >> 10;
      const int A = (vx * 221 - vv * 11 - v * 1697 + ((X * 3105) >> 1) + 1868069) >> 11;
      const int factor = ((6434 - A) * ((inv * K) >> 12)) >> 12;
      const int sx = (std::max(((factor * nx) >> 12) + 2048, 0) * w) >> 12;
      const int sy = (std::max(((factor * ny) >> 12) + 2048, 0) * h) >> 12;
      const auto copy = [&](int toY, int toX, int fromY, int fromX) {
        if (fromY < 0 || fromY >= h || fromX < 0 || fromX >= w) return;
        std::reverse_copy(src + (fromY * w + fromX) * 3, src + (fromY * w + fromX + 1) * 3,
                          dst + (toY * w + toX) * 3);
      };
      copy(y, x, sy, sx), copy(h - 1 - y, x, h - 1 - sy, sx);
      copy(y, w - 1 - x, sy, w - 1 - sx), copy(h - 1 - y, w - 1 - x, h - 1 - sy, w - 1 - sx);
    }
  }
}

inline void fillLight(uint8_t* src, uint8_t* dst, float radius, int w, int h) {
  const int hh = h >> 1, hw = w >> 1, R2 = hh * hh + hw * hw, norm = R2 == 0 ? 0 : 1073741824 / R2;
  const int F = int(radius * 32768.0f), inv = int((1.0 / double(radius + radius)) * 32768.0);
  for (int y = 0; y <= hh; ++y) {
    for (int x = 0; x <= hw; ++x) {
      const int d = (((y - hh) * (y - hh) + (x - hw) * (x - hw)) * norm) >> 15;
      const int d2 = (d * d) >> 15, d4 = (d2 * d2) >> 15, d3 = (d2 * d) >> 15, d5 = (d * d4) >> 15;
      const int p = 2 * (((d * 23837) >> 15) + 3401 - ((d2 * 22035) >> 15) + ((d3 * 18134) >> 15) -
                         ((d4 * 8790) >> 15) + ((d5 * 1837) >> 15));
      const int g = (F > p ? F : p) + (F >> 2), wgt = std::max(32767 - ((g * inv) >> 15), 0);
      const int k = int(double((32767 - wgt) * 8 - 163835) * 0.33333);
      const int addR = ((k * 122) >> 15) + ((wgt * 255) >> 15);
      const int addG = ((k * 74) >> 15) + ((wgt * 33) >> 13);
      const int addB = ((k * 97) >> 15) + ((wgt * 97) >> 15);
      for (const int row : {y, h - 1 - y}) {
        for (const int i : {(row * w + x) * 3, (row * w + w - 1 - x) * 3}) {
          dst[i] = uint8_t(std::min(src[i + 2] + addR, 255));
          dst[i + 1] = uint8_t(std::min(src[i + 1] + addG, 255));
          dst[i + 2] = uint8_t(std::min(src[i] + addB, 255));
        }
      }
    }
  }
}

}  // namespace ref
