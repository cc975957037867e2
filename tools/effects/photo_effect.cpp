#include "tools/effects/photo_effect.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <string>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "effect/pipeline.h"
#include "images/job.h"
#include "tools/effects/photo_pipeline.h"

namespace alg::tool {
namespace {

/// "--offset 3 --ramp 40"
std::string asOptions(const Operation& operation, const Call& call) {
  std::string text;
  std::size_t i = 0;
  for (const Parameter& parameter : operation.parameters) {
    text += fmt::format("{}--{} {}", i == 0 ? "" : " ", parameter.name, call.values[i]);
    ++i;
  }
  return text;
}

}  // namespace

std::vector<const Operation*> effects() {
  std::vector<const Operation*> found;
  std::ranges::copy_if(operations(), std::back_inserter(found),
                       [](const Operation* row) { return isEffect(*row); });
  return found;
}

void runOnFrame(const Operation& operation, const PictureView& picture, const Frame& frame) {
  const Outcome outcome = runEffect(
      {.operation = &operation, .picture = picture.pixels != nullptr ? &picture : nullptr}, frame);
  if (outcome == Outcome::kNoMemory) {
    throw std::bad_alloc();  // what could be decoded also fits the pipeline's limits
  }
  if (outcome == Outcome::kNoPicture) {
    throw PictureError(fmt::format("{}: its {} has {} rows, but needs at least {}", operation.name,
                                   operation.pictures[0].name, picture.height,
                                   operation.pipeline.strips));
  }
}

void runOnPixels(const Operation& operation, const Call& call, Photo& photo) {
  const auto imageOf = [](uint8_t* pixels, int width, int height, bool redFirst) {
    return Image{pixels, width, height, std::ptrdiff_t{kArgbBytes} * width, redFirst};
  };
  Job job;
  job.operation = &operation;
  job.onPool = false;  // a batch has a thread for each of its photos
  std::ranges::copy(call.values, job.values);
  std::ranges::transform(call.pictures, job.pictures, [&](const PictureView& picture) {
    return imageOf(const_cast<uint8_t*>(picture.pixels), picture.width, picture.height, true);
  });
  const Image image = imageOf(photo.pixels.get(), photo.width, photo.height, false);
  if (runJob(job, image, image) != JobOutcome::kDone) {
    throw std::bad_alloc();
  }
}

Call callFor(const Operation& operation, Call call, EffectPictures& pictures, int width,
             int height) {
  call.width = width;
  call.height = height;
  if (const char* why = operation.misfit != nullptr ? operation.misfit(call) : nullptr) {
    throw BadInput(fmt::format("{}: {} does not go with the photo's {} rows of {} pixels: {}",
                               operation.name, asOptions(operation, call), height, width, why));
  }
  std::ranges::copy(pictures.of(operation, width, height), call.pictures);
  return call;
}

void applyEffect(const Operation& operation, const Call& call, Way way, EffectPictures& pictures,
                 Photo& photo) {
  const Call whole = callFor(operation, call, pictures, photo.width, photo.height);
  if (takesFrames(operation, way)) {
    throughFrame(photo,
                 [&](const Frame& frame) { runOnFrame(operation, whole.pictures[0], frame); });
  } else {
    runOnPixels(operation, whole, photo);
  }
}

}  // namespace alg::tool
