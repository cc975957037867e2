// Emboss: grey relief of the luminance step from two rows up and two columns left.
#include <cstdint>

#include "base/block.h"
#include "base/clamp.h"
#include "kernels/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PackedImage;

/// Luminance in 16 fractional bits; the weights add up to 1, so that it stays a byte.
int luminance(int blue, int green, int red) {
  return ((13933 * red) + (46871 * green) + (4732 * blue)) >> 16;
}

void relief(const uint8_t* top, const uint8_t* bottom, uint8_t* out, int count) {
  for (int x = 0; x < count; ++x, out += alg::kPackedBytes) {
    out[0] = out[1] = out[2] = alg::clampToByte(((bottom[x + 2] - top[x]) * 16) + 128);
  }
}

/// Row 0, which holds what dst held before, goes one pixel to the right in row 1 (its last pixel to
/// the start of row 2), while the last row but one takes the row above it from right to left. With
/// few rows each reads what the other has written, so the order counts.
void smearRows(const PackedImage& dst) {
  for (int k = 0; k < dst.width; ++k) {
    const bool wraps = k + 1 == dst.width;
    const int toRow = wraps ? 2 : 1;
    if (toRow < dst.height) {
      alg::copyPixel(dst.at(toRow, wraps ? 0 : k + 1), dst.at(0, k));
    }
    if (dst.height >= 3) {
      const int mirrored = dst.width - 1 - k;
      alg::copyPixel(dst.at(dst.height - 2, mirrored), dst.at(dst.height - 3, mirrored));
    }
  }
}

}  // namespace

void Emboss(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const alg::Block ring = alg::allocateBlock(alg::greyRingBytes(width));
  if (!ring) {
    return;
  }
  const PackedImage image{dst, width, height};
  alg::walkWindows(alg::greyRows(src, width, ring.get(), luminance), image,
                   alg::WindowTarget::kBottomRight,
                   [](const uint8_t* top, const uint8_t* /*middle*/, const uint8_t* bottom,
                      uint8_t* out, int count) { relief(top, bottom, out, count); });
  smearRows(image);
  alg::copyEdgeColumns(image);
}
