#include "tools/commands/blend.h"

#include <fmt/format.h>

#include <utility>

#include "catalogue/operations.h"
#include "tools/photos/colour.h"
#include "tools/photos/photo_file.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

/// Values can be blended when they stand for colours of one profile.
void matchColours(PhotoFile& file, const std::vector<uint8_t>& profile) {
  if (file.metadata.profile() != profile &&
      !convertColours(file.photo, file.metadata.profile(), profile)) {
    throw BadInput(fmt::format("{}: can't be converted to the other photo's colour profile",
                               file.origin.path.string()));
  }
}

}  // namespace

void blendPhotos(const BlendRequest& request) {
  const Operation* const operation = findOperation(request.mode);
  if (request.weight && operation->parameters.empty()) {
    throw WrongUse(fmt::format("--weight goes with --mode mix, not with {}", request.mode));
  }
  PhotoFile file = readPhoto(request.first, request.options);
  const Photo first = std::move(file.photo);
  PhotoFile other = readPhoto(request.second, request.options);
  matchColours(other, file.metadata.profile());
  file.photo = std::move(other.photo);
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
  file.change.moved = true;  // half of them are another photo's
  writePhoto(request.output, file, request.options);
}

}  // namespace alg::tool
