// The effects that work on one pixel at a time, as functions of its red, green and blue, and
// LomoFun.
#pragma once

#include <array>

#include "reference.h"

namespace ref {

/// Bytes 0, 1 and 2 of a destination pixel, from red, green and blue.
using Pixel = std::array<int, 3>;
using Rule = Pixel(int r, int g, int b);

inline int stretch(int v, double gain) { return clamp255(trunc((v - 128) * gain) + 128); }
inline int stretchTest(int v) { return clamp255(trunc(std::fma(v, 1.5, 127.0))); }
inline int lifted(int v) { return (dim(v) >> 2) + ((3 * (255 - dim(v))) >> 2); }

inline Pixel crossProcess(int r, int g, int b) {
  const int c = stretch(r, 1.5), up = 255 - c, h = 255 - g;
  return {c <= 127 ? c * c * c >> 14 : 255 - (up * up * up >> 14),
          g <= 127 ? g * g >> 7 : 255 - (h * h >> 7), b / 2 + 64};
}
inline Pixel lomo(int r, int g, int b) { return {screen(stretch(r, 1.5)), screen(g), lifted(b)}; }
inline Pixel pink(int r, int g, int b) {
  return {screen(r), screen(stretch(g, 1.5)), lifted(stretch(b, 1.2))};
}
inline Pixel summer(int r, int g, int) { return {r, g / 2 + 127, 100}; }
inline Pixel ocean(int r, int g, int b) {
  return {r >= 170 ? 3 * r - 510 : 0, g >= 85 ? g + g / 2 - 127 : 0, b};
}
inline Pixel negative(int r, int g, int b) { return {255 - r, 255 - g, 255 - b}; }
inline Pixel mosaic(int r, int g, int b) {
  return {r < 156 ? r + 100 : 255, g < 206 ? g + 50 : 255, b < 244 ? b + 12 : 255};
}
inline Pixel otherTest(int r, int g, int b) {
  return {screen(stretchTest(r - 107)), screen(stretchTest(g - 127)),
          trunc(screen(stretchTest(b - 127)) * 0.8)};
}
inline Pixel grayScale(int r, int g, int b) {
  const int y = (601 * g + 306 * r + 117 * b) >> 10;
  return {y, y, y};
}
inline Pixel sepia(int r, int g, int b) {
  const int r2 = (805 * r + 1575 * g + 387 * b) >> 11, g2 = (715 * r + 1405 * g + 344 * b) >> 11;
  return {std::min(r2, 255), std::min(g2, 255), (557 * r + 1097 * g + 268 * b) >> 11};
}

inline Pixel temperature(int r, int g, int b) {
  const auto shift = [](int p, int gain) { return ((255 - p) * p * gain) >> 15; };
  const int t[] = {r + shift(r, 116), g + shift(g, 29), b - shift(b, 116)};
  const int most = std::max({t[0], t[1], t[2]});
  const float scale = most > 255 ? 255.0f / float(most) : 1.0f;
  return {trunc(float(t[0]) * scale), trunc(float(t[1]) * scale), trunc(float(t[2]) * scale)};
}

inline void lomoFun(const int* src, int* dst, int width, int height) {
  const bool wide = width > height;
  const int hh = height >> 1, hw = width >> 1, r2 = hh * hh + hw * hw;
  const int scale = wide ? (height << 15) / width : (width << 15) / height;
  const int inner = trunc(r2 * 0.19999999999999996);
  for (int i = 0; i < width * height; ++i, src += 3) {
    const int ry = hh - i / width, rx = hw - i % width;
    const int dx = wide ? (scale * rx) >> 15 : rx, dy = wide ? ry : (scale * ry) >> 15;
    const int d2 = dx * dx + dy * dy;
    for (int value : lomo(clamp255(src[2]), clamp255(src[1]), clamp255(src[0]))) {
      if (d2 > inner) {
        const float k = float(1.0 / (r2 - inner)), t = float(r2 - d2) * k, u = t * t, u2 = u * u;
        value = trunc(float(value) * float(0.5 * u + 0.5 * u2));
      }
      *dst++ = clamp255(value);
    }
  }
}

}  // namespace ref
