#include "tools/resize_blend.h"

#include <fmt/format.h>

#include "base/image_size.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/pretty_filters.h"
#include "tools/console.h"
#include "tools/photo.h"
#include "tools/size.h"

namespace alg::tool {

void resizePhoto(const ResizeRequest& request) {
  const Size size = parseSize(request.size, kLongestJpegSide);
  const auto [photo, metadata] = readPhoto(request.input);
  if (photo.width > kLongestSide || photo.height > kLongestSide) {
    throw UserError(fmt::format("{} has {}x{} pixels; resize takes up to {} on a side",
                                request.input.string(), photo.width, photo.height, kLongestSide));
  }
  Photo resized = blankPhoto(size.width, size.height);
  ::Resize(wordsOf(resized), size.width, size.height, wordsOf(photo), photo.width, photo.height);
  makeOpaque(resized);
  writePhoto(request.output, resized, metadata, request.quality);
}

void blendPhotos(const BlendRequest& request) {
  if (request.weight && request.mode != "mix") {
    throw WrongUse(fmt::format("--weight goes with --mode mix, not with {}", request.mode));
  }
  const auto [first, metadata] = readPhoto(request.first);
  const Photo second = readPhoto(request.second).photo;
  if (first.width != second.width || first.height != second.height) {
    throw UserError(fmt::format("{} has {}x{} pixels, but {} has {}x{}; only equal sizes blend",
                                request.first.string(), first.width, first.height,
                                request.second.string(), second.width, second.height));
  }
  const uint8_t* src = first.pixels.get();
  uint8_t* dst = second.pixels.get();
  const auto bytes = static_cast<unsigned int>(pixelCount(first.width, first.height) * kArgbBytes);
  if (request.mode == "lighten") {
    CameraUtil::add2ImageByBrightness(src, dst, bytes);
  } else if (request.mode == "darken") {
    CameraUtil::add2ImageByDarkness(src, dst, bytes);
  } else {
    constexpr int kWhole = 256;
    const int weight = request.weight.value_or(kWhole / 2);
    CameraUtil::add2Image(src, weight, dst, static_cast<unsigned int>(kWhole - weight), bytes);
  }
  writePhoto(request.output, second, metadata, request.quality);
}

}  // namespace alg::tool
