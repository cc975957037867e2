#include "tools/road.h"

#include <fmt/format.h>

#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "base/image_size.h"
#include "effect/pipeline.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/yuv_convert.h"
#include "platform/device_path.h"
#include "tools/console.h"
#include "tools/effect_names.h"
#include "tools/files.h"

namespace alg::tool {
namespace {

void cropToEven(Photo& photo, const std::filesystem::path& path) {
  const int width = photo.width & ~1;
  const int height = photo.height & ~1;
  if (width == photo.width && height == photo.height) {
    return;
  }
  if (width == 0 || height == 0) {
    throw UserError(fmt::format("{}: {}x{} pixels are too few, a frame has at least 2x2",
                                path.string(), photo.width, photo.height));
  }
  note(fmt::format("{}: cropped from {}x{} to {}x{}, frames have even sides", path.string(),
                   photo.width, photo.height, width, height));
  const auto oldRow = static_cast<std::size_t>(photo.width) * kArgbBytes;
  const auto newRow = static_cast<std::size_t>(width) * kArgbBytes;
  for (std::size_t row = 1; row < static_cast<std::size_t>(height); ++row) {
    std::memmove(&photo.pixels[row * newRow], &photo.pixels[row * oldRow], newRow);
  }
  photo.width = width;
  photo.height = height;
}

}  // namespace

Photo readPhoto(const std::filesystem::path& path, int keepSide) {
  std::optional<DecodedJpeg> photo = decodeJpeg(readFile(path), {.keepSide = keepSide});
  if (!photo) {
    throw UserError(fmt::format("{}: not a JPEG, or damaged beyond decoding", path.string()));
  }
  cropToEven(*photo, path);
  return std::move(*photo);
}

bool applyEffect(const EffectTableEntry& effect, Photo& photo) {
  const int width = photo.width;
  const int height = photo.height;
  auto* pixels = reinterpret_cast<uint32_t*>(photo.pixels.get());
  std::vector<uint8_t> bytes(static_cast<std::size_t>(yuvFrameBytes(width, height)));
  uint8_t* chroma = bytes.data() + pixelCount(width, height);
  const Frame frame{bytes.data(), chroma, width, height, width, width};

  decodeARGB2YVU_OpenGL(pixels, frame.y, frame.uv, width, height, width, width);
  if (!runEffect(effect.name, frame)) {
    throw std::bad_alloc();  // what decodes also fits the road's limits
  }
  decodeYVU2ARGB_OpenGL(pixels, frame.y, frame.uv, width, height, width, width);

  // The road says nothing about a picture it can't get; the lookup does.
  if (!effect.changesFrame() ||
      effectTypeInit(effect.name, width, height).effectId == effect.effectId) {
    return true;
  }
  const char* picture = width > height ? effect.landscapePicture : effect.portraitPicture;
  note(fmt::format("{} leaves the photo as it is: cannot read its picture {}", effect.name,
                   devicePath(fmt::format("{}{}", kPictureFolder, picture))));
  return false;
}

EncodedJpeg encodePixels(const uint8_t* pixels, int width, int height, int quality) {
  std::optional<EncodedJpeg> jpeg = encodeJpeg(pixels, width, height, quality);
  if (!jpeg) {
    throw UserError(fmt::format("cannot encode {}x{} pixels as JPEG", width, height));
  }
  return std::move(*jpeg);
}

}  // namespace alg::tool
