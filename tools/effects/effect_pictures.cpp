#include "tools/effects/effect_pictures.h"

#include <fmt/format.h>

#include "platform/device_path.h"
#include "tools/files/files.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// On the pipeline, a missing picture also stops an effect that takes one without looking at it.
bool needs(const Operation& operation, const PictureRole& role) {
  return role.read || operation.pipeline.runs;
}

void checkSizes(const Operation& operation, const EffectPictures::Views& views) {
  const PictureView& first = views[0];
  for (std::size_t i = 1; i < operation.pictures.size(); ++i) {
    const PictureRole& role = operation.pictures[i];
    // A wider one would cover the first, too, but look skewed: it is read as if it were as wide.
    if (role.size == PictureRole::Size::kCoversTheFirst &&
        (views[i].width != first.width || views[i].height < first.height)) {
      throw PictureError(
          fmt::format("{}: its {} has {}x{} pixels, but must be as wide and at least as tall as "
                      "its {} picture of {}x{}",
                      operation.name, role.name, views[i].width, views[i].height,
                      operation.pictures[0].name, first.width, first.height));
    }
  }
}

}  // namespace

EffectPictures::Views EffectPictures::of(const Operation& operation, int width, int height) {
  // The pipeline alone picks a file by the frame's shape.
  const bool landscape = operation.pipeline.runs && width > height;
  Views views;
  std::size_t i = 0;
  for (const PictureRole& role : operation.pictures) {
    if (needs(operation, role)) {
      views[i] = find(operation, role, landscape);
    }
    ++i;
  }
  checkSizes(operation, views);
  return views;
}

PictureView EffectPictures::find(const Operation& operation, const PictureRole& role,
                                 bool landscape) {
  const auto users = users_.find(role.name);
  const std::string path = users != users_.end()
                               ? users->second.string()
                               : devicePath(std::string(kPictureFolder) + role.fileFor(landscape));
  const Bitmap& picture = decoded(path);
  if (picture.pixels) {
    return {picture.pixels.get(), picture.width, picture.height};
  }
  if (users != users_.end()) {
    if (std::error_code error; fs::is_fifo(path, error) || fs::is_character_file(path, error)) {
      throw BadInput(fmt::format("{}: not a regular file", path));  // reading it might wait
    }
    readFile(path);  // throws with the reason when it can't be read
    throw BadInput(fmt::format("{}: not a PNG, or damaged beyond decoding", path));
  }
  throw PictureError(fmt::format("{}: cannot read its picture {}", operation.name, path));
}

const Bitmap& EffectPictures::decoded(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const auto [entry, isNew] = decoded_.try_emplace(path);
  if (isNew) {
    decodePngOfHost(path.c_str(), entry->second);
  }
  return entry->second;
}

}  // namespace alg::tool
