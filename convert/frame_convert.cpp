#include "convert/frame_convert.h"

#include <algorithm>

#include "base/streamed.h"
#include "convert/bt601.h"
#include "convert/chroma_cursor.h"
#include "convert/decode_rows.h"
#include "convert/encode_rows.h"
#include "hwy/cache_control.h"

namespace alg {
namespace {

// Pixels whose chroma pairs are gathered or scattered at a time when the plane is not contiguous.
constexpr int kChunk = 512;

void gatherPairs(ChromaCursor& cursor, const uint8_t* chroma, uint8_t* pairs, int width) {
  for (int x = 0; x < width; x += 2) {
    const std::size_t pair = cursor.next();
    for (int byte = 0; byte < 2; ++byte) {
      const auto inside = cursor.nearestInside(pair + static_cast<std::size_t>(byte));
      pairs[x + byte] = inside ? chroma[*inside] : static_cast<uint8_t>(bt601::kChromaOffset);
    }
  }
}

void scatterPairs(ChromaCursor& cursor, const uint8_t* pairs, uint8_t* chroma, int width) {
  for (int x = 0; x < width; x += 2) {
    const std::size_t pair = cursor.next();
    for (int byte = 0; byte < 2; ++byte) {
      const std::size_t offset = pair + static_cast<std::size_t>(byte);
      if (cursor.inside(offset)) {
        chroma[offset] = pairs[x + byte];
      }
    }
  }
}

template <class Byte>
Byte* lumaRow(const Planes<Byte>& planes, int row) {
  return planes.luma + std::ptrdiff_t{row} * planes.yStride;
}

std::size_t pairBytes(int width) { return (static_cast<std::size_t>(width) + 1) & ~std::size_t{1}; }

}  // namespace

void decodeFrame(RowFormat format, uint8_t* pixels, const Planes<const uint8_t>& planes, int width,
                 int height) {
  if (width < 1 || height < 1) {
    return;
  }
  ChromaCursor cursor(width, height, planes.uvStride, ChromaCursor::Direction::kDecode);
  const std::size_t pitch = pixelBytes(format) * static_cast<std::size_t>(width);
  const std::size_t bytes = pitch * static_cast<std::size_t>(height);
  const bool stream = format != RowFormat::kPackedUV && isStreamed(pixels, bytes);
  const bool inPairs = decodesInPairs(bytes, stream);
  const auto decodeBlockRow = [&](int row, int x, int count, const uint8_t* pairs) {
    const std::size_t firstByte = pixelBytes(format) * static_cast<std::size_t>(x);
    const auto pixelRow = [&](int r) {
      return pixels + pitch * static_cast<std::size_t>(r) + firstByte;
    };
    if (inPairs && row + 1 < height) {
      decodeRowPair(format, lumaRow(planes, row) + x, planes.yStride, pairs, pixelRow(row),
                    static_cast<std::ptrdiff_t>(pitch), static_cast<std::size_t>(count), stream);
      return;
    }
    for (int r = row; r < std::min(row + 2, height); ++r) {
      decodeRow(format, lumaRow(planes, r) + x, pairs, pixelRow(r),
                static_cast<std::size_t>(count));
    }
  };
  for (int row = 0; row < height; row += 2) {
    if (cursor.contiguous()) {
      const std::size_t blockRow = static_cast<std::size_t>(row) / 2;
      decodeBlockRow(row, 0, width, planes.chroma + blockRow * pairBytes(width));
      continue;
    }
    uint8_t pairs[kChunk];
    for (int x = 0; x < width; x += kChunk) {
      const int count = std::min(kChunk, width - x);
      gatherPairs(cursor, planes.chroma, pairs, count);
      decodeBlockRow(row, x, count, pairs);
    }
  }
  if (stream) hwy::FlushStream();
}

void encodeFrame(RowFormat format, const uint8_t* pixels, const Planes<uint8_t>& planes, int width,
                 int height) {
  if (width < 1 || height < 1) {
    return;
  }
  ChromaCursor cursor(width, height, planes.uvStride, ChromaCursor::Direction::kEncode);
  const std::size_t pitch = pixelBytes(format) * static_cast<std::size_t>(width);
  for (int row = 0; row < height; row += 2) {
    const int bottom = std::min(row + 1, height - 1);
    if (row < bottom) {
      encodeLumaRow(format, pixels + pitch * static_cast<std::size_t>(row), lumaRow(planes, row),
                    static_cast<std::size_t>(width));
    }
    // A block's chroma is that of its bottom-left pixel.
    const uint8_t* bottomPixels = pixels + pitch * static_cast<std::size_t>(bottom);
    if (cursor.contiguous()) {
      const std::size_t blockRow = static_cast<std::size_t>(row) / 2;
      encodeRow(format, bottomPixels, lumaRow(planes, bottom),
                planes.chroma + blockRow * pairBytes(width), static_cast<std::size_t>(width));
      continue;
    }
    uint8_t pairs[kChunk];
    for (int x = 0; x < width; x += kChunk) {
      const int count = std::min(kChunk, width - x);
      encodeRow(format, bottomPixels + pixelBytes(format) * static_cast<std::size_t>(x),
                lumaRow(planes, bottom) + x, pairs, static_cast<std::size_t>(count));
      scatterPairs(cursor, pairs, planes.chroma, count);
    }
  }
}

}  // namespace alg
