#include "tools/resize_blend.h"

#include <fmt/format.h>

#include <utility>

#include "catalogue/operations.h"
#include "libalgorithm/pretty_filters.h"
#include "tools/console.h"
#include "tools/photo_file.h"
#include "tools/size.h"

namespace alg::tool {

void resizePhoto(const ResizeRequest& request) {
  const Size size = parseSize(request.size, kLongestJpegSide);
  PhotoFile file = readPhoto(request.input, request.options);
  const Photo& photo = file.photo;
  if (photo.width > kLongestSide || photo.height > kLongestSide) {
    throw BadInput(fmt::format("{} has {}x{} pixels; resize takes up to {} on a side",
                               request.input.string(), photo.width, photo.height, kLongestSide));
  }
  Photo resized = blankPhoto(size.width, size.height);
  ::Resize(wordsOf(resized), size.width, size.height, wordsOf(photo), photo.width, photo.height);
  makeOpaque(resized);
  file.photo = std::move(resized);
  writePhoto(request.output, file, request.options);
}

void blendPhotos(const BlendRequest& request) {
  const Operation* const operation = findOperation(request.mode);
  if (request.weight && operation->parameters.empty()) {
    throw WrongUse(fmt::format("--weight goes with --mode mix, not with {}", request.mode));
  }
  PhotoFile file = readPhoto(request.first, request.options);
  const Photo first = std::move(file.photo);
  file.photo = readPhoto(request.second, request.options).photo;
  const Photo& second = file.photo;
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
  writePhoto(request.output, file, request.options);
}

}  // namespace alg::tool
