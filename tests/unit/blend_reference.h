// Blends and the copy of a rectangle, one byte or pixel at a time in memory order.
#pragma once

#include "reference.h"

namespace ref {

/// Of b and c what is nearer to a.
inline Bytes background(const uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  Bytes result;
  for (int i = 0; i < n; ++i) {
    result.push_back(std::abs(b[i] - a[i]) < std::abs(c[i] - a[i]) ? b[i] : c[i]);
  }
  return result;
}

inline void farthest(uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  for (const int from : background(a, b, c, n)) {  // of the images as they were
    const int da = std::abs(*a - from), db = std::abs(*b - from), dc = std::abs(*c - from);
    *a = da < dc && db < dc ? *c : da < db ? *b : *a;
    ++a, ++b, ++c;
  }
}

inline void paste(const uint8_t* src, uint8_t* dst, int width, const int (&rect)[4]) {
  for (int x = rect[0]; x < rect[2]; ++x) {
    for (int y = rect[1]; y < rect[3]; ++y) {
      uint8_t pixel[4];
      std::memcpy(pixel, src + 4 * (y * width + x), 4);
      std::memcpy(dst + 4 * (y * width + x), pixel, 4);
    }
  }
}

}  // namespace ref
