// The fish-eye: its arithmetic, and the kernel that fills all rows of a picture. Each pixel is
// taken from where a barrel lens would have put it.
//
// Lengths are Q12 (4096 = 1.0, the picture's side; 2048 = from the centre to an edge). Roots,
// reciprocals and the arc are short series of products and shifts whose truncations are contract.
#pragma once

#include <algorithm>
#include <cstdint>

namespace alg {

inline constexpr int kOne = 4096;

/// How strongly the picture bends, by its aspect.
struct Lens {
  int aspect;  // width / height, at most 1.0
  int reach;   // scales the angle
  int zoom;    // fits the bent picture into the frame; 0 where that would divide by 0
};

constexpr Lens makeLens(int aspect) {
  const int reach = 2 * aspect + 3072;
  const int a = (reach * 2326) >> 14;
  const int a2 = (a * a) >> 10;
  const int p =
      ((((a * a2) >> 10) * 442) - (((a2 * a2) >> 10) * 22) - a2 * 3394 + a * 12420 - 22481469) >>
      12;
  return {.aspect = aspect, .reach = reach, .zoom = p == 0 ? 0 : 9625600 / -p};
}

inline constexpr Lens kLandscape = makeLens(kOne);
static_assert(kLandscape.reach == 11264 && kLandscape.zoom == 4147);

inline Lens lensFor(int width, int height) {
  if (width > height) {
    return kLandscape;
  }
  const auto ratio = static_cast<float>(static_cast<double>(width) / height);
  return makeLens(static_cast<int>(4096.0 * static_cast<double>(ratio)));
}

/// sqrt(v) x 4095 / 4096, nearly: the series of sqrt(1 + t) to the fourth power about v = 0.5.
constexpr int root(int v) {
  const int t = 2 * v - 4095;
  const int t2 = t * t;
  const int t2q = t2 >> 12;
  const int sum = (t >> 1) + 4095 - (t2 >> 15) + ((t2q * t) >> 16) - ((t2q * t2q * 5) >> 19);
  return (sum * 2896) >> 12;  // 1 / sqrt(2)
}

/// 1 / v for v up to 1.0: 2 - v + u^2 + u^3 + u^4 with u = 1 - v.
constexpr int reciprocal(int v) {
  const int u = 4095 - v;
  const int u2 = (u * u) >> 12;
  return 8190 - v + u2 + ((u2 * u) >> 12) + ((u2 * u2) >> 12);
}

/// pi / 2 minus the arc of x.
constexpr int arc(int x) {
  const int v = (x * x) >> 14;
  const int sum =
      (((v * x) >> 12) * 221) - (((v * v) >> 10) * 11) - (v * 1697) + ((x * 3105) >> 1) + 1868069;
  return 6434 - (sum >> 11);
}

/// How much farther from the centre the source lies, for a squared radius.
constexpr int stretch(int squaredRadius, const Lens& lens) {
  const int inverse = reciprocal(root(squaredRadius));
  const int x = (((root(1782 - squaredRadius) * inverse) >> 12) * lens.reach) >> 12;
  return (arc(x) * ((inverse * lens.zoom) >> 12)) >> 12;
}

/// The distance from the centre, stretched, as a position on a side of `size` pixels.
constexpr int position(int factor, int offset, int size) {
  return (std::max(((factor * offset) >> 12) + 2048, 0) * size) >> 12;
}

struct FisheyeMap {
  FisheyeMap(int imageWidth, int imageHeight)
      : width(imageWidth),
        height(imageHeight),
        stepX((1 << 24) / imageWidth),
        stepY((1 << 24) / imageHeight),
        tallness((imageHeight << 12) / imageWidth),
        lens(lensFor(imageWidth, imageHeight)) {}

  int offsetX(int dx) const { return (dx * stepX) >> 12; }
  int offsetY(int dy) const { return (dy * stepY) >> 12; }

  // The same in units of the picture's longer side.
  int lengthX(int offset) const { return (offset * lens.aspect) >> 12; }
  int lengthY(int offset) const { return (tallness * ((lens.aspect * offset) >> 12)) >> 12; }

  int width, height;
  int stepX, stepY;  // from column to column, from row to row
  int tallness;      // height / width
  Lens lens;
};

/// Fills all rows; by the definition one pixel and its mirror images at a time.
void fisheye(const FisheyeMap& map, const uint8_t* src, uint8_t* dst);
void fisheyePlain(const FisheyeMap& map, const uint8_t* src, uint8_t* dst);

}  // namespace alg
