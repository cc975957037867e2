#include "tools/effects/effect_chain.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "libalgorithm/yuv_convert.h"
#include "tools/effects/effect_names.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

/// Pictures have R, G, B, A pixels.
Image imageOf(const PictureView& picture) {
  return {const_cast<uint8_t*>(picture.pixels), picture.width, picture.height,
          std::ptrdiff_t{4} * picture.width, true};
}

}  // namespace

EffectChain::EffectChain(const std::string& names, const EffectChoices& choices, double mix,
                         Way way)
    : weight_(static_cast<int>(std::lround(mix * kWholeWeight / 100))),
      way_(way),
      pictures_(choices.pictures) {
  std::vector<const Operation*> operations;
  std::istringstream list(names + ",");  // so that an empty last name is one
  for (std::string name; std::getline(list, name, ',');) {
    operations.push_back(&findEffect(name));
    title_ += (title_.empty() ? "" : "+") + name;
    if (!isEffect(*operations.back())) {
      note(fmt::format("{} is a name that passes through: photos stay as they are, up to rounding",
                       name));
    }
  }
  checkOwners(choices, operations);
  for (const Operation* operation : operations) {
    steps_.push_back({operation, callWith(choices, *operation)});
    if (!choices.pictures.empty()) {
      pictures_.of(*operation, 1, 1);
    }
  }
}

void EffectChain::applyTo(Photo& photo, const std::filesystem::path& path) {
  if (std::ranges::any_of(
          steps_, [this](const Step& step) { return takesFrames(*step.operation, way_); })) {
    cropToEven(photo, path);
  }
  if (weight_ == 0) {
    return;
  }
  Photo original;
  if (weight_ != kWholeWeight) {
    original = copyOf(photo);
  }
  for (const Step& step : steps_) {
    applyEffect(*step.operation, step.call, way_, pictures_, photo);
  }
  if (weight_ != kWholeWeight) {
    uint8_t* const pixels = photo.pixels.get();
    mixRow(original.pixels.get(), pixels, pixels,
           pixelCount(photo.width, photo.height) * kArgbBytes, weight_);
  }
}

bool EffectChain::fitsBands() const {
  return std::ranges::all_of(steps_, [this](const Step& step) {
    const Bands bands = step.operation->bands;
    return !takesFrames(*step.operation, way_) &&
           (bands == Bands::kAny || (bands == Bands::kNear && steps_.size() == 1));
  });
}

std::vector<Job> EffectChain::jobs(int width, int height) {
  std::vector<Job> jobs;
  for (const Step& step : steps_) {
    if (weight_ == 0) {
      break;
    }
    const Call call = callFor(*step.operation, step.call, pictures_, width, height);
    Job& job = jobs.emplace_back();
    job.operation = step.operation;
    std::ranges::copy(call.values, job.values);
    std::ranges::transform(call.pictures, job.pictures, imageOf);
  }
  return jobs;
}

bool EffectChain::movesPixels() const {
  return std::ranges::any_of(
      steps_, [](const Step& step) { return step.operation->reach == Reach::kAnything; });
}

bool EffectChain::needsPixels() const {
  return !std::ranges::all_of(
      steps_, [](const Step& step) { return takesFrames(*step.operation, Way::kFrame); });
}

void EffectChain::applyTo(const Frame& frame, Photo& pixels) {
  for (const Step& step : steps_) {
    const Operation& operation = *step.operation;
    if (takesFrames(operation, Way::kFrame)) {
      runOnFrame(operation, pictures_.of(operation, frame.width, frame.height)[0], frame);
    } else {
      decodeYVU2ARGB_OpenGL(wordsOf(pixels), frame.y, frame.uv, frame.width, frame.height,
                            frame.yStride, frame.uvStride);
      applyEffect(operation, step.call, Way::kFrame, pictures_, pixels);
      decodeARGB2YVU_OpenGL(wordsOf(pixels), frame.y, frame.uv, frame.width, frame.height,
                            frame.yStride, frame.uvStride);
    }
  }
}

}  // namespace alg::tool
