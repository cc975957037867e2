// Whole images and strips through the row kernels, block by block, for all semi-planar conversions.
#pragma once

#include <cstdint>

#include "convert/row_format.h"

namespace alg {

/// A semi-planar frame as its two planes and their strides in bytes.
template <class Byte>
struct Planes {
  Byte* luma;
  Byte* chroma;
  int yStride;
  int uvStride;
};

/// Decodes planes into pixels with a row pitch of width pixels. Does nothing for a size below 1.
void decodeFrame(RowFormat format, uint8_t* pixels, const Planes<const uint8_t>& planes, int width,
                 int height);

/// Encodes pixels into planes. Does nothing for a size below 1.
void encodeFrame(RowFormat format, const uint8_t* pixels, const Planes<uint8_t>& planes, int width,
                 int height);

}  // namespace alg
