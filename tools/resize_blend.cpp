#include "tools/resize_blend.h"

#include <fmt/format.h>

#include "catalogue/operations.h"
#include "libalgorithm/pretty_filters.h"
#include "tools/console.h"
#include "tools/photo.h"
#include "tools/size.h"

namespace alg::tool {

void resizePhoto(const ResizeRequest& request) {
  const Size size = parseSize(request.size, kLongestJpegSide);
  const auto [photo, metadata] = readPhoto(request.input);
  if (photo.width > kLongestSide || photo.height > kLongestSide) {
    throw BadInput(fmt::format("{} has {}x{} pixels; resize takes up to {} on a side",
                               request.input.string(), photo.width, photo.height, kLongestSide));
  }
  Photo resized = blankPhoto(size.width, size.height);
  ::Resize(wordsOf(resized), size.width, size.height, wordsOf(photo), photo.width, photo.height);
  makeOpaque(resized);
  writePhoto(request.output, resized, metadata, request.quality);
}

void blendPhotos(const BlendRequest& request) {
  const Operation* const operation = findOperation(request.mode);
  if (request.weight && operation->parameters.empty()) {
    throw WrongUse(fmt::format("--weight goes with --mode mix, not with {}", request.mode));
  }
  const auto [first, metadata] = readPhoto(request.first);
  const Photo second = readPhoto(request.second).photo;
  if (first.width != second.width || first.height != second.height) {
    throw BadInput(fmt::format("{} has {}x{} pixels, but {} has {}x{}; only equal sizes blend",
                               request.first.string(), first.width, first.height,
                               request.second.string(), second.width, second.height));
  }
  Call call = presetCall(*operation);
  call.values[0] = request.weight.value_or(call.integer(0));
  call.src = first.pixels.get();
  call.dst = second.pixels.get();
  call.width = first.width;
  call.height = first.height;
  operation->run(call);
  writePhoto(request.output, second, metadata, request.quality);
}

}  // namespace alg::tool
