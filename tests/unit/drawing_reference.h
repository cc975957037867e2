// The drawing effects, which look at neighbours, one pixel at a time.
#pragma once

#include "catalogue/operation.h"
#include "reference.h"

namespace ref {

/// A packed image. A copy does nothing when one of its pixels is outside.
struct Image {
  uint8_t* data;
  int w, h;
  uint8_t* at(int y, int x) const { return data + (y * w + x) * 3; }
  bool has(int y, int x) const { return y >= 0 && y < h && x >= 0 && x < w; }
  void copy(int toY, int toX, int y, int x) const {
    if (has(toY, toX) && has(y, x)) std::copy_n(at(y, x), 3, at(toY, toX));
  }
  void copyColumns() const {
    for (int y = 0; y < h; ++y) copy(y, 0, y, 1), copy(y, w - 1, y, w - 2);
  }
  void copyEdges() const {
    for (int x = 0; x < w; ++x) copy(0, x, 1, x), copy(h - 1, x, h - 2, x);
    copyColumns();
  }
};

/// Calls body(near, out, y, x), with near(dy, dx) for the source's pixels, `first` rows and columns
/// from the start, `last` before the end.
template <class Body>
Image fill(uint8_t* src, uint8_t* dst, int w, int h, int first, int last, Body body) {
  const Image s{src, w, h}, d{dst, w, h};
  for (int y = first; y < h - last; ++y) {
    for (int x = first; x < w - last; ++x) {
      body([&](int dy, int dx) { return s.at(y + dy, x + dx); }, d.at(y, x), y, x);
    }
  }
  return d;
}

/// Without a paper one of zeros.
inline void sketch(uint8_t* src, uint8_t* dst, int w, int h, const alg::PictureView& paper) {
  fill(src, dst, w, h, 1, 1, [&](auto near, uint8_t* out, int y, int x) {
    const auto g = [&](int dy, int dx) {
      const uint8_t* p = near(dy, dx);
      return (218 * p[2] + 732 * p[1] + 74 * p[0]) >> 10;
    };
    int gx = 0, gy = 0;
    for (const int i : {-1, 0, 1}) gx += 2 * (g(i, -1) - g(i, 1)), gy += 2 * (g(-1, i) - g(1, i));
    const float root = std::sqrt(float(std::min(gx * gx + gy * gy, 65025))) * 0.003921569f;
    const int e = 255 - (root > 1.0f ? 255 : trunc(255.0 * root));
    const int texel = y * paper.height / h * paper.width + x * paper.width / w;
    for (int k = 0; k < 3; ++k) {
      out[k] = uint8_t(
          std::min(e + (k < 2 && paper.pixels != nullptr ? paper.pixels[texel * 4 + k] : 0), 255));
    }
  }).copyEdges();
}

inline void prague(uint8_t* src, uint8_t* dst, int w, int h) {
  static const std::vector<int> kEdges = [] {
    std::vector<int> edges;
    for (int k = 0; k < 122500; ++k) {
      const double base = std::sqrt(float(k)) / 350.0f;
      edges.push_back(255 - int(float(1.0 - std::exp(-5.0 * std::pow(base, 1.5))) * 255.0f));
    }
    edges.push_back(2);
    return edges;
  }();
  fill(src, dst, w, h, 1, 1, [](auto near, uint8_t* out, int, int) {
    for (int c = 0; c < 3; ++c) {
      int gx = 0, gy = 0;
      for (const int i : {-1, 0, 0, 1}) {
        gx += near(i, -1)[c] - near(i, 1)[c], gy += near(-1, i)[c] - near(1, i)[c];
      }
      const int e = kEdges[asSize(std::min(gx * gx + gy * gy, 122500))], v = near(0, 0)[c];
      out[2 - c] = uint8_t(v < 128 ? (v * e) >> 7 : 255 - (((255 - v) * (255 - e)) >> 7));
    }
  }).copyEdges();
}

inline void carton(uint8_t* src, uint8_t* dst, int w, int h) {
  fill(src, dst, w, h, 1, 1, [](auto near, uint8_t* out, int, int) {
    const uint8_t *ul = near(-1, -1), *ur = near(-1, 1), *ll = near(1, -1), *lr = near(1, 1);
    int m[3] = {0, 0, std::max({ll[2], lr[2], ul[2] > ur[2] ? ul[2] : ur[1]})};
    for (const int c : {0, 1}) m[c] = std::max({ul[c], ur[c], ll[c], lr[c]});
    const int most = std::max({m[0], m[1], m[2]}) + 1;
    for (int c = 0; c < 3; ++c) {
      const auto f = float(1.0 / (m[c] + (most - m[c]) * 0.25));
      out[2 - c] = uint8_t(trunc(near(0, 0)[c] * 255.0 * f));
    }
  }).copyEdges();
}

inline void natureEffect(uint8_t* src, uint8_t* dst, int w, int h) {
  const Image d = fill(src, dst, w, h, 1, 1, [](auto near, uint8_t* out, int, int) {
    const uint8_t *p = near(0, 0), *n = near(-1, -1);
    const int most = std::max({p[0], p[1], p[2], n[0], n[1], n[2]});
    const uint8_t other = n[0] < std::min(n[1], n[2]) ? n[0] : std::max({n[0], n[1], n[2]});
    const float rcp = most == 0 ? 0.0f : float(1.0 / most);
    const float s = float(most - std::min({p[0], p[1], p[2], other})) * rcp;
    for (int c = 0; c < 3; ++c) {
      const float ks = float(trunc(p[c] * p[c] * double(rcp))) * s;
      const int i = trunc(std::fma(double(p[c]), 1.0 - double(s), double(ks)));
      out[2 - c] = uint8_t(clamp255(trunc((i - 128) * 1.5) + 128));
    }
  });
  for (int k = 0; k < w; ++k) d.copy(0, k, 1, k), d.copy(h - 1, w - 1 - k, h - 2, w - 1 - k);
  for (int y = 0; y < h; ++y) {
    for (int i = y * w + 1, k = 0; k < 3 && i + k < w * h * 3; ++k) d.at(y, 0)[k] = dst[i + k];
    d.copy(y, w - 1, y, w - 2);
  }
}

inline void emboss(uint8_t* src, uint8_t* dst, int w, int h) {
  const Image d = fill(src, dst, w, h, 2, 0, [](auto near, uint8_t* out, int, int) {
    const auto l = [](const uint8_t* p) {
      return (13933 * p[2] + 46871 * p[1] + 4732 * p[0]) >> 16;
    };
    const int step = (l(near(0, 0)) - l(near(-2, -2))) * 16;
    std::fill_n(out, 3, uint8_t(step < -128 ? 0 : std::min(step + 128, 255)));
  });
  for (int k = 0; k < w; ++k) {
    d.copy((w + 1 + k) / w, (w + 1 + k) % w, 0, k), d.copy(h - 2, w - 1 - k, h - 3, w - 1 - k);
  }
  d.copyColumns();
}

}  // namespace ref
