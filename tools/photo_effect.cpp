#include "tools/photo_effect.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <string>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "effect/pipeline.h"
#include "platform/large_block.h"
#include "tools/photo_pipeline.h"

namespace alg::tool {
namespace {

Block newBlock(std::size_t bytes) {
  Block block = allocateLargeBlock(bytes);
  if (!block) {
    throw std::bad_alloc();
  }
  return block;
}

/// Pixels of three values, which the operation crosses.
template <typename Value>
void runOnPacked(const Operation& operation, Call& call, Photo& photo) {
  const std::size_t values = pixelCount(photo.width, photo.height) * kPackedBytes;
  const bool inPlace = operation.overlap != Overlap::kApart && !operation.readsDestination;
  const Block source = newBlock(values * sizeof(Value));
  const Block result = inPlace ? Block() : newBlock(values * sizeof(Value));
  call.src = source.get();
  call.dst = inPlace ? call.src : result.get();
  auto* const src = reinterpret_cast<Value*>(call.src);
  auto* const dst = reinterpret_cast<Value*>(call.dst);

  // The photo has B, G, R, A. What the operation leaves of the destination shows the source.
  const std::size_t first = operation.pixels == Pixels::kPackedRgb ? 2 : 0;
  const std::size_t last = 2 - first;
  uint8_t* pixel = photo.pixels.get();
  for (std::size_t i = 0; i < values; i += kPackedBytes, pixel += kArgbBytes) {
    src[i] = pixel[first];
    src[i + 1] = pixel[1];
    src[i + 2] = pixel[last];
    if (operation.readsDestination) {
      dst[i] = pixel[last];
      dst[i + 1] = pixel[1];
      dst[i + 2] = pixel[first];
    }
  }
  if (operation.backdrop >= 0) {
    std::fill_n(dst, values, static_cast<Value>(operation.backdrop));
  }
  operation.run(call);
  pixel = photo.pixels.get();
  for (std::size_t i = 0; i < values; i += kPackedBytes, pixel += kArgbBytes) {
    pixel[last] = static_cast<uint8_t>(dst[i]);
    pixel[1] = static_cast<uint8_t>(dst[i + 1]);
    pixel[first] = static_cast<uint8_t>(dst[i + 2]);
  }
}

void runOnWords(const Operation& operation, Call& call, Photo& photo) {
  const bool inPlace = operation.overlap != Overlap::kApart;
  const std::size_t bytes = bytesOf(Pixels::kWords, pixelCount(photo.width, photo.height));
  const Block source = inPlace ? Block() : newBlock(bytes);
  if (!inPlace) {
    std::memcpy(source.get(), photo.pixels.get(), bytes);
  }
  call.dst = photo.pixels.get();
  call.src = inPlace ? call.dst : source.get();
  operation.run(call);
  makeOpaque(photo);
}

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

void runOnPixels(const Operation& operation, Call call, Photo& photo) {
  call.width = photo.width;
  call.height = photo.height;
  if (operation.pixels == Pixels::kWords) {
    runOnWords(operation, call, photo);
  } else if (operation.pixels == Pixels::kInts) {
    runOnPacked<int>(operation, call, photo);
  } else {
    runOnPacked<uint8_t>(operation, call, photo);
  }
}

void applyEffect(const Operation& operation, Call call, EffectPictures& pictures, Photo& photo) {
  call.width = photo.width;
  call.height = photo.height;
  if (const char* why = operation.misfit != nullptr ? operation.misfit(call) : nullptr) {
    throw BadInput(fmt::format("{}: {} does not go with the photo's {} rows of {} pixels: {}",
                               operation.name, asOptions(operation, call), photo.height,
                               photo.width, why));
  }
  std::ranges::copy(pictures.of(operation, photo.width, photo.height), call.pictures);
  if (takesFrames(operation)) {
    throughFrame(photo,
                 [&](const Frame& frame) { runOnFrame(operation, call.pictures[0], frame); });
  } else {
    runOnPixels(operation, call, photo);
  }
}

}  // namespace alg::tool
