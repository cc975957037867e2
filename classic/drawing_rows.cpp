// The definitions of the drawing effects' row kernels.
#include "classic/drawing_rows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/clamp.h"
#include "base/image_size.h"

namespace alg {
namespace {

int inkGrey(int energy, const EdgeSteps& edges) {
  const auto number = static_cast<float>(energy + EdgeSteps::kOffset);  // exact
  int bits;
  std::memcpy(&bits, &number, sizeof bits);
  const int entry = edges.entries[(bits >> EdgeSteps::kBlockShift) - EdgeSteps::kFirstBlock];
  const auto rank = static_cast<int16_t>(bits >> EdgeSteps::kRankShift);
  return (entry & 0xFF) - (rank > entry >> 16 ? 1 : 0);
}

/// Overlay blend of v over the edge map's grey.
uint8_t overlay(int v, int grey) {
  return static_cast<uint8_t>(v < 128 ? (v * grey) >> 7 : 255 - (((255 - v) * (255 - grey)) >> 7));
}

uint8_t inkByte(const PlaneWindow& w, std::size_t left, const EdgeSteps& edges) {
  const std::size_t centre = left + 1, right = left + 2;
  const int gy = (w.top[left] + (2 * w.top[centre]) + w.top[right]) -
                 (w.bottom[left] + (2 * w.bottom[centre]) + w.bottom[right]);
  const int gx = (w.top[left] + (2 * w.middle[left]) + w.bottom[left]) -
                 (w.top[right] + (2 * w.middle[right]) + w.bottom[right]);
  return overlay(w.middle[centre], inkGrey((gx * gx) + (gy * gy), edges));
}

}  // namespace

void reliefRowPlain(const uint8_t* top, const uint8_t* bottom, uint8_t* grey, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    grey[x] = clampToByte(((bottom[x + 2] - top[x]) * 16) + 128);
  }
}

void lineRowPlain(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
                  std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    const int gx =
        2 * ((top[x] + middle[x] + bottom[x]) - (top[x + 2] + middle[x + 2] + bottom[x + 2]));
    const int gy =
        2 * ((top[x] + top[x + 1] + top[x + 2]) - (bottom[x] + bottom[x + 1] + bottom[x + 2]));
    const auto energy = static_cast<float>((gx * gx) + (gy * gy));  // exact
    grey[x] = static_cast<uint8_t>(255 - std::min(static_cast<int>(std::sqrt(energy)), 255));
  }
}

void inkRowPlain(const PlaneWindow& rows, uint8_t* out, std::size_t count, const EdgeSteps& edges) {
  for (std::size_t x = 0; x < count; ++x, out += kPackedBytes) {
    for (int c = 0; c < kPackedBytes; ++c) {
      out[2 - c] = inkByte(rows.plane(c), x, edges);
    }
  }
}

void cartoonRowPlain(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                     const CartoonFactors& factors) {
  for (std::size_t left = 0; left < count; ++left, out += kPackedBytes) {
    const std::size_t right = left + 2;
    int most[kPackedBytes];
    for (int c = 0; c < kPackedBytes; ++c) {
      const PlaneWindow w = rows.plane(c);
      int upper = std::max(w.top[left], w.top[right]);
      // Where the upper right pixel's channel 2 would win, its channel 1 is taken: this tints the
      // picture.
      if (c == 2 && w.top[left] <= w.top[right]) {
        upper = rows.plane(1).top[right];
      }
      most[c] = std::max({upper, int{w.bottom[left]}, int{w.bottom[right]}});
    }
    const int brightest = std::max({most[0], most[1], most[2]});
    for (int c = 0; c < kPackedBytes; ++c) {
      const uint32_t factor = factors.entries[(3 * most[c]) + brightest];
      const uint32_t v = rows.plane(c).middle[left + 1];
      const uint32_t fine = (v * (factor & 0xFFFF)) >> CartoonFactors::kFineBits;
      out[2 - c] = static_cast<uint8_t>((v * (factor >> 16) + fine) >> 8);
    }
  }
}

}  // namespace alg
