#include "tools/effect_chain.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

#include "catalogue/operations.h"
#include "libalgorithm/yuv_convert.h"
#include "tools/console.h"
#include "tools/effect_names.h"
#include "tools/photo_effect.h"

namespace alg::tool {
namespace {

constexpr int kWhole = 256;

/// Lays a result over the photo that it was made of.
void layOver(Photo& original, const Photo& result, int weight) {
  const Operation* const mix = findOperation("mix");
  Call call = presetCall(*mix);
  call.values[0] = weight;
  call.src = result.pixels.get();
  call.dst = original.pixels.get();
  call.width = original.width;
  call.height = original.height;
  mix->run(call);
}

}  // namespace

EffectChain::EffectChain(const std::string& names, const EffectChoices& choices, double mix)
    : weight_(static_cast<int>(std::lround(mix * kWhole / 100))), pictures_(choices.pictures) {
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
  if (std::ranges::any_of(steps_, [](const Step& step) { return takesFrames(*step.operation); })) {
    cropToEven(photo, path);
  }
  if (weight_ == 0) {
    return;
  }
  Photo original;
  if (weight_ != kWhole) {
    original = copyOf(photo);
  }
  for (const Step& step : steps_) {
    applyEffect(*step.operation, step.call, pictures_, photo);
  }
  if (weight_ != kWhole) {
    layOver(original, photo, weight_);
    photo = std::move(original);
  }
}

bool EffectChain::movesPixels() const {
  return std::ranges::any_of(
      steps_, [](const Step& step) { return step.operation->reach == Reach::kAnything; });
}

bool EffectChain::needsPixels() const {
  return !std::ranges::all_of(steps_,
                              [](const Step& step) { return takesFrames(*step.operation); });
}

void EffectChain::applyTo(const Frame& frame, Photo& pixels) {
  for (const Step& step : steps_) {
    const Operation& operation = *step.operation;
    if (takesFrames(operation)) {
      runOnFrame(operation, pictures_.of(operation, frame.width, frame.height)[0], frame);
    } else {
      decodeYVU2ARGB_OpenGL(wordsOf(pixels), frame.y, frame.uv, frame.width, frame.height,
                            frame.yStride, frame.uvStride);
      applyEffect(operation, step.call, pictures_, pixels);
      decodeARGB2YVU_OpenGL(wordsOf(pixels), frame.y, frame.uv, frame.width, frame.height,
                            frame.yStride, frame.uvStride);
    }
  }
}

}  // namespace alg::tool
