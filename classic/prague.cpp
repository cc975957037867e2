// Prague: each channel overlaid with its inverted Sobel edges. PragueCarton: each pixel divided by
// the brightest of its diagonal neighbours.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "base/image_size.h"
#include "kernels/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

constexpr int kMaxEnergy = 350 * 350;            // squared gradients are limited to this
constexpr int kChunk = 256 * alg::kPackedBytes;  // bytes whose gradients are taken in one go

struct EdgeTable {
  uint8_t grey[kMaxEnergy + 1];  // of a squared gradient: 255 without an edge, 2 on a strong one
};

/// Any C library's exp and pow give this table: errors of up to 64 units in the last place in
/// either, tried over all entries, change none.
const EdgeTable& edgeTable() {
  static const EdgeTable kTable = [] {
    EdgeTable t;
    for (int i = 0; i <= kMaxEnergy; ++i) {
      const double length = std::sqrt(static_cast<float>(i)) / 350.0f;  // a float, up to 1
      const auto rise = static_cast<float>(1.0 - std::exp(-5.0 * std::pow(length, 1.5)));
      t.grey[i] = static_cast<uint8_t>(255 - static_cast<int>(rise * 255.0f));
    }
    return t;
  }();
  return kTable;
}

/// The squared Sobel gradient of each byte; neighbours are kPackedBytes apart.
void takeEnergies(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom,
                  int32_t* energies, int count) {
  for (int left = 0; left < count; ++left) {
    const int centre = left + alg::kPackedBytes;
    const int right = centre + alg::kPackedBytes;
    const int gy = (top[left] + (2 * top[centre]) + top[right]) -
                   (bottom[left] + (2 * bottom[centre]) + bottom[right]);
    const int gx = (top[left] + (2 * middle[left]) + bottom[left]) -
                   (top[right] + (2 * middle[right]) + bottom[right]);
    energies[left] = std::min((gx * gx) + (gy * gy), kMaxEnergy);
  }
}

/// Overlay blend of v over the edge map's grey.
uint8_t overlay(int v, int grey) {
  return static_cast<uint8_t>(v < 128 ? (v * grey) >> 7 : 255 - (((255 - v) * (255 - grey)) >> 7));
}

void inkRow(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* out,
            int count, const EdgeTable& table) {
  int32_t energies[kChunk];
  const std::ptrdiff_t bytes = std::ptrdiff_t{count} * alg::kPackedBytes;
  for (std::ptrdiff_t at = 0; at < bytes; at += kChunk) {
    const auto part = static_cast<int>(std::min<std::ptrdiff_t>(bytes - at, kChunk));
    takeEnergies(top + at, middle + at, bottom + at, energies, part);
    const uint8_t* centre = middle + at + alg::kPackedBytes;
    for (int i = 0; i < part; i += alg::kPackedBytes) {
      for (int c = 0; c < alg::kPackedBytes; ++c) {
        out[at + i + 2 - c] = overlay(centre[i + c], table.grey[energies[i + c]]);
      }
    }
  }
}

struct CartoonTable {
  float factor[(3 * 255) + 256 + 1];
};

/// The factor of a channel whose brightest neighbour is `most`, where one more than the brightest
/// neighbour of all channels is `limit`: 1.0 / (most + (limit - most) x 0.25), as entry
/// 3 x most + limit. Both divisions have the same real quotient, so they round to the same double.
const CartoonTable& cartoonTable() {
  static const CartoonTable kTable = [] {
    CartoonTable t{};
    for (int i = 1; i < static_cast<int>(std::size(t.factor)); ++i) {
      t.factor[i] = static_cast<float>(4.0 / i);
    }
    return t;
  }();
  return kTable;
}

/// What exceeds 255 wraps.
uint8_t scale(int v, float factor) {
  return static_cast<uint8_t>(static_cast<int>(v * 255.0 * static_cast<double>(factor)));
}

void cartoonPixel(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* out,
                  const CartoonTable& table) {
  constexpr int kRight = 2 * alg::kPackedBytes;  // from the window's left column to its right one
  int most[3];
  for (int c = 0; c < 2; ++c) {
    most[c] = std::max({top[c], top[kRight + c], bottom[c], bottom[kRight + c]});
  }
  // Where the upper right pixel's channel 2 would win, its channel 1 is taken: this tints the
  // picture.
  const int upper = top[2] > top[kRight + 2] ? top[2] : top[kRight + 1];
  most[2] = std::max({upper, int{bottom[2]}, int{bottom[kRight + 2]}});
  const int limit = std::max({most[0], most[1], most[2]}) + 1;
  for (int c = 0; c < 3; ++c) {
    out[2 - c] = scale(middle[alg::kPackedBytes + c], table.factor[(3 * most[c]) + limit]);
  }
}

/// Runs a row kernel over the inner pixels, then copies the edges.
template <class Kernel>
void draw(const uint8_t* src, uint8_t* dst, int width, int height, Kernel kernel) {
  if (width < 1 || height < 1) {
    return;
  }
  const alg::PackedImage image{dst, width, height};
  alg::walkWindows(alg::packedRows(src, width), image, alg::WindowTarget::kCentre, kernel);
  alg::copyEdges(image);
}

}  // namespace

void Prague(unsigned char* src, unsigned char* dst, int width, int height, float /*unused*/) {
  draw(src, dst, width, height,
       [&table = edgeTable()](const uint8_t* top, const uint8_t* middle, const uint8_t* bottom,
                              uint8_t* out,
                              int count) { inkRow(top, middle, bottom, out, count, table); });
}

void PragueCarton(unsigned char* src, unsigned char* dst, int width, int height, float /*unused*/) {
  draw(src, dst, width, height,
       [&table = cartoonTable()](const uint8_t* top, const uint8_t* middle, const uint8_t* bottom,
                                 uint8_t* out, int count) {
         for (std::ptrdiff_t at = 0; at < std::ptrdiff_t{count} * alg::kPackedBytes;
              at += alg::kPackedBytes) {
           cartoonPixel(top + at, middle + at, bottom + at, out + at, table);
         }
       });
}
