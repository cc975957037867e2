#include "images/frames.h"

#include "convert/decode_rows.h"
#include "convert/encode_rows.h"
#include "convert/row_format.h"

namespace alg {
namespace {

RowFormat formatOf(const Image& image, const FrameImage& frame) {
  if (image.redFirst) {
    return frame.vFirst ? RowFormat::kRgbaVU : RowFormat::kRgbaUV;
  }
  return frame.vFirst ? RowFormat::kArgbVU : RowFormat::kArgbUV;
}

}  // namespace

void decodeToImage(const FrameImage& frame, const Image& image) {
  const RowFormat format = formatOf(image, frame);
  const auto width = static_cast<std::size_t>(frame.width);
  const std::size_t bytes = image.rowBytes() * static_cast<std::size_t>(frame.height);
  const bool inPairs = decodesInPairs(bytes);
  for (int y = 0; y < frame.height; y += 2) {
    const uint8_t* luma = frame.luma + y * frame.lumaStride;
    const uint8_t* chroma = frame.chroma + y / 2 * frame.chromaStride;
    if (inPairs) {
      decodeRowPair(format, luma, frame.lumaStride, chroma, image.row(y), image.stride, width);
      continue;
    }
    decodeRow(format, luma, chroma, image.row(y), width);
    decodeRow(format, luma + frame.lumaStride, chroma, image.row(y + 1), width);
  }
}

void encodeFromImage(const Image& image, const FrameImage& frame) {
  const RowFormat format = formatOf(image, frame);
  const auto width = static_cast<std::size_t>(frame.width);
  for (int y = 0; y < frame.height; y += 2) {
    uint8_t* luma = frame.luma + y * frame.lumaStride;
    encodeLumaRow(format, image.row(y), luma, width);
    encodeRow(format, image.row(y + 1), luma + frame.lumaStride,
              frame.chroma + y / 2 * frame.chromaStride, width);
  }
}

}  // namespace alg
