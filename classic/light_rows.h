// The fill light: its arithmetic, and the kernel that lights all rows of a picture. Distances and
// weights are Q15 (32768 = 1.0). 32-bit products wrap, which they do for radii below about 0.27.
#pragma once

#include <algorithm>
#include <cstdint>

namespace alg {

/// Truncates; what no int can hold becomes the nearest one, and NaN 0, on every machine alike.
int truncated(double v);

/// From the squared distance (1.0 at the corners) to about the distance: 0.2 at the centre, 1.0 at
/// the corners.
constexpr int falloff(int d) {
  const int d2 = (d * d) >> 15;
  const int d4 = (d2 * d2) >> 15;
  return 2 *
         (((d * 23837) >> 15) + 3401 - ((d2 * 22035) >> 15) + ((((d2 * d) >> 15) * 18134) >> 15) -
          ((d4 * 8790) >> 15) + ((((d * d4) >> 15) * 1837) >> 15));
}

/// What a pixel gains.
struct Gains {
  int red, green, blue;
};

struct FillLight {
  FillLight(float radius, int imageWidth, int imageHeight)
      : width(imageWidth),
        height(imageHeight),
        full(truncated(radius * 32768.0f)),
        inverse(truncated((1.0 / static_cast<double>(radius + radius)) * 32768.0)) {
    const int halfWidth = width >> 1;
    const int halfHeight = height >> 1;
    const int squared = halfHeight * halfHeight + halfWidth * halfWidth;
    norm = squared == 0 ? 0 : (1 << 30) / squared;
  }

  int distance(int dy, int dx) const { return ((dy * dy + dx * dx) * norm) >> 15; }

  int weight(int distanceFromCentre) const {
    const int reach = std::max(full, falloff(distanceFromCentre)) + (full >> 2);
    return std::max(32767 - ((reach * inverse) >> 15), 0);
  }

  Gains gains(int dy, int dx) const {
    const int w = weight(distance(dy, dx));
    const int dimmed = static_cast<int>(((32767 - w) * 8 - 163835) * 0.33333);
    return {((dimmed * 122) >> 15) + ((w * 255) >> 15), ((dimmed * 74) >> 15) + ((w * 33) >> 13),
            ((dimmed * 97) >> 15) + ((w * 97) >> 15)};
  }

  int width, height;
  int full;     // the radius; within it the light does not fall off
  int inverse;  // of the diameter
  int norm;     // 2^30 / squared half diagonal
};

/// Lights all rows; by the definition one pixel and its mirror images at a time.
void fillLight(const FillLight& light, const uint8_t* src, uint8_t* dst);
void fillLightPlain(const FillLight& light, const uint8_t* src, uint8_t* dst);

}  // namespace alg
