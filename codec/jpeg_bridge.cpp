#include "codec/jpeg_bridge.h"

#include <limits>

namespace alg {
namespace {

constexpr auto kJavaLimit = static_cast<std::size_t>(std::numeric_limits<int32_t>::max());

}  // namespace

std::optional<DecodedJpeg> jpegToArgb(const uint8_t* file, std::size_t size) {
  return decodeJpeg({file, size}, JpegDecodeOptions{.maxPixelBytes = kJavaLimit});
}

std::optional<EncodedJpeg> argbToJpeg(const uint8_t* pixels, int width, int height, int quality) {
  auto jpeg = encodeJpeg(pixels, width, height, quality);
  if (jpeg && jpeg->size > kJavaLimit) {
    jpeg.reset();
  }
  return jpeg;
}

}  // namespace alg
