// The definitions of the decoding row kernels.
#include "convert/decode_rows.h"

#include "convert/bt601.h"

namespace alg {
namespace {

uint8_t clampedChannel(int32_t value) {
  const int32_t atMost = value > bt601::kChannelMax ? bt601::kChannelMax : value;
  return static_cast<uint8_t>((atMost < 0 ? 0 : atMost) >> 16);
}

}  // namespace

void decodeRowPlain(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                    std::size_t width) {
  const std::size_t uIndex = hasVFirst(format) ? 1 : 0;
  const std::size_t bIndex = hasRedFirst(format) ? 2 : 0;
  for (std::size_t x = 0; x < width; ++x) {
    const uint8_t* pair = chroma + (x & ~std::size_t{1});
    const int32_t u = pair[uIndex] - bt601::kChromaOffset;
    const int32_t v = pair[1 - uIndex] - bt601::kChromaOffset;
    const int32_t level = bt601::kLumaGain * (luma[x] - bt601::kLumaOffset);
    uint8_t* pixel = pixels + pixelBytes(format) * x;
    pixel[bIndex] = clampedChannel(level + bt601::kBlueFromU * u);
    pixel[1] = clampedChannel(level + bt601::kGreenFromV * v + bt601::kGreenFromU * u);
    pixel[2 - bIndex] = clampedChannel(level + bt601::kRedFromV * v);
    if (pixelBytes(format) == 4) {
      pixel[3] = 0xFF;
    }
  }
}

void decodeRowPairPlain(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                        const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                        std::size_t width, bool /*stream*/) {
  decodeRowPlain(format, luma, chroma, pixels, width);
  decodeRowPlain(format, luma + lumaStride, chroma, pixels + pixelStride, width);
}

}  // namespace alg
