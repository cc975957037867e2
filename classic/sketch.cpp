// Sketch and newsketch: dark edge lines on white or on paper.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/block.h"
#include "base/image_size.h"
#include "kernels/nearest_steps.h"
#include "kernels/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

constexpr int kMaxEnergy = 255 * 255;  // squared gradients are limited to this
constexpr int kChunk = 256;            // pixels whose gradients are taken in one go

/// Luminance in 10 fractional bits; the weights add up to 1, so that it stays a byte.
int luminance(int blue, int green, int red) {
  return ((218 * red) + (732 * green) + (74 * blue)) >> 10;
}

struct LineTable {
  uint8_t grey[kMaxEnergy + 1];  // 255 minus the root of a squared gradient, rounded down
};

/// The root is defined as trunc(255.0 x (sqrtf(i) x 0.003921569f)), which is its floor for all i.
const LineTable& lineTable() {
  static const LineTable kTable = [] {
    LineTable t;
    for (int i = 0, root = 0; i <= kMaxEnergy; ++i) {
      root += (root + 1) * (root + 1) <= i ? 1 : 0;
      t.grey[i] = static_cast<uint8_t>(255 - root);
    }
    return t;
  }();
  return kTable;
}

/// The squared gradient: all three rows and columns weigh the same, twice.
void takeEnergies(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom,
                  uint16_t* energies, int count) {
  for (int x = 0; x < count; ++x) {
    const int gx =
        2 * ((top[x] + middle[x] + bottom[x]) - (top[x + 2] + middle[x + 2] + bottom[x + 2]));
    const int gy =
        2 * ((top[x] + top[x + 1] + top[x + 2]) - (bottom[x] + bottom[x + 1] + bottom[x + 2]));
    energies[x] = static_cast<uint16_t>(std::min((gx * gx) + (gy * gy), kMaxEnergy));
  }
}

struct WhitePaper {
  void nextRow() {}
  static void draw(uint8_t line, uint8_t* out) { out[0] = out[1] = out[2] = line; }
};

/// A picture of 4 bytes a pixel, stretched over the image. Its bytes 0 and 1 tint red and green;
/// blue takes none.
class PaperPicture {
 public:
  PaperPicture(const uint8_t* pixels, int width, int height, int imageWidth, int imageHeight)
      : pixels_(pixels),
        width_(width),
        column_(width, imageWidth),
        firstColumn_(column_),
        row_(height, imageHeight) {
    firstColumn_.advance();  // drawing starts in column 1 ...
  }

  void nextRow() {
    row_.advance();  // ... and in row 1
    column_ = firstColumn_;
  }

  void draw(uint8_t line, uint8_t* out) {
    const std::ptrdiff_t at = (std::ptrdiff_t{row_.index()} * width_) + column_.index();
    const uint8_t* tint = pixels_ + (at * alg::kArgbBytes);
    out[0] = static_cast<uint8_t>(std::min(line + tint[0], 255));
    out[1] = static_cast<uint8_t>(std::min(line + tint[1], 255));
    out[2] = line;
    column_.advance();
  }

 private:
  const uint8_t* pixels_;
  int width_;
  alg::NearestSteps column_, firstColumn_, row_;
};

template <class Paper>
void sketchOn(Paper paper, const uint8_t* src, uint8_t* dst, int width, int height) {
  const alg::Block ring = alg::allocateBlock(alg::greyRingBytes(width));
  if (!ring) {
    return;
  }
  const auto drawRow = [&paper, &table = lineTable()](const uint8_t* top, const uint8_t* middle,
                                                      const uint8_t* bottom, uint8_t* out,
                                                      int count) {
    paper.nextRow();
    uint16_t energies[kChunk];
    for (int x = 0; x < count; x += kChunk) {
      const int part = std::min(count - x, kChunk);
      takeEnergies(top + x, middle + x, bottom + x, energies, part);
      for (int i = 0; i < part; ++i, out += alg::kPackedBytes) {
        paper.draw(table.grey[energies[i]], out);
      }
    }
  };
  const alg::PackedImage image{dst, width, height};
  alg::walkWindows(alg::greyRows(src, width, ring.get(), luminance), image,
                   alg::WindowTarget::kCentre, drawRow);
  alg::copyEdges(image);
}

}  // namespace

void Sketch(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width >= 1 && height >= 1) {
    sketchOn(WhitePaper{}, src, dst, width, height);
  }
}

void newsketch(unsigned char* src, unsigned char* dst, int width, int height,
               unsigned char* auxImage, int auxWidth, int auxHeight) {
  if (width >= 1 && height >= 1 && auxWidth >= 1 && auxHeight >= 1) {
    sketchOn(PaperPicture(auxImage, auxWidth, auxHeight, width, height), src, dst, width, height);
  }
}
