// Bilinear resize of 32-bit words (0xAARRGGBB) in 16-bit fixed point.
//
// Positions are 32-bit with 16 fractional bits and wrap. The weights of two neighbours add up to
// 65535, and every step truncates.
#include <cstddef>

#include "libalgorithm/pretty_filters.h"

namespace {

constexpr uint32_t kFraction = 0xFFFF;

/// Source pixels per destination pixel, truncated. Out of an int's range it wraps as positions do;
/// the way there by 64 bits holds every ratio of two ints (below 2^47).
int32_t stepOf(int sourceSize, int targetSize) {
  const double ratio = static_cast<double>(sourceSize) / targetSize;
  return static_cast<int32_t>(static_cast<int64_t>(ratio * 65536.0));
}

/// The whole part of a position, limited to 0..size - 1.
int wholePart(int32_t position, int size) {
  const int whole = position >> 16;
  return whole < 0 ? 0 : whole < size ? whole : size - 1;
}

/// Two channels or one, each in 32 bits of its own: 8-bit values times 16-bit weights can't carry
/// from one into the other.
struct Channels {
  uint64_t redBlue;
  uint64_t green;
};

Channels split(uint32_t word) {
  return {(uint64_t{word & 0xFF0000} << 16) | (word & 0xFF), (word >> 8) & 0xFF};
}

/// Mixes each channel: a x (65535 - fraction) + b x fraction, >> 16.
Channels mix(Channels a, Channels b, uint32_t fraction) {
  const uint64_t rest = kFraction - fraction;
  return {((a.redBlue * rest + b.redBlue * fraction) >> 16) & 0x000000FF000000FF,
          (a.green * rest + b.green * fraction) >> 16};
}

/// Two neighbouring rows of the source for one row of the destination.
struct RowPair {
  const uint32_t* top;
  const uint32_t* bottom;  // top itself in the last row
  int64_t bound;  // columns below it have their right-hand neighbour, others only themselves
  // What stands to the right of the last column: the first pixel of the next row. Neighbours past
  // the end of the source are taken from the last row.
  uint32_t endTop;
  uint32_t endBottom;
};

/// @param y    row of the source
/// @param row  row of the destination: neighbours to the right end before source row `row` + 1,
///             whatever y is
RowPair rowsAt(const uint32_t* src, int width, int height, int y, int row) {
  const int64_t first = int64_t{y} * width;
  const int nextRow = y + 1 < height ? y + 1 : height - 1;
  const int afterNextRow = y + 2 < height ? y + 2 : height - 1;
  const auto rowAt = [=](int at) { return src + static_cast<std::ptrdiff_t>(at) * width; };
  const int32_t end = (row + 1) * width;  // in pixels; wraps
  return {src + first, rowAt(nextRow), end - first - 1, *rowAt(nextRow), *rowAt(afterNextRow)};
}

void resizeRow(uint32_t* dst, int dstWidth, const RowPair& rows, int srcWidth, int32_t step,
               uint32_t fractionY) {
  int32_t position = 0;
  for (int i = 0; i < dstWidth; ++i, position += step) {
    const int x = wholePart(position, srcWidth);
    const uint32_t fractionX = static_cast<uint32_t>(position) & kFraction;
    uint32_t topRight = rows.top[x];
    uint32_t bottomRight = rows.bottom[x];
    if (x < rows.bound) {
      const bool inside = x + 1 < srcWidth;
      topRight = inside ? rows.top[x + 1] : rows.endTop;
      bottomRight = inside ? rows.bottom[x + 1] : rows.endBottom;
    }
    const Channels top = mix(split(rows.top[x]), split(topRight), fractionX);
    const Channels bottom = mix(split(rows.bottom[x]), split(bottomRight), fractionX);
    const Channels value = mix(top, bottom, fractionY);
    dst[i] = static_cast<uint32_t>((value.redBlue >> 16) | (value.green << 8) | value.redBlue);
  }
}

}  // namespace

void Resize(uint32_t* dst, int dstWidth, int dstHeight, const uint32_t* src, int srcWidth,
            int srcHeight) {
  if (dstWidth < 1 || dstHeight < 1 || srcWidth < 1 || srcHeight < 1) {
    return;
  }
  const int32_t xStep = stepOf(srcWidth, dstWidth);
  const int32_t yStep = stepOf(srcHeight, dstHeight);
  int32_t position = 0;
  for (int j = 0; j < dstHeight; ++j, position += yStep, dst += dstWidth) {
    const RowPair rows = rowsAt(src, srcWidth, srcHeight, wholePart(position, srcHeight), j);
    resizeRow(dst, dstWidth, rows, srcWidth, xStep, static_cast<uint32_t>(position) & kFraction);
  }
}
