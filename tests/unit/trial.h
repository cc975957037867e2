// One run of an operation: sizes, parameters, pictures, contents, and how its images overlap.
#pragma once

#include <optional>
#include <string_view>

#include "fuzz/input.h"
#include "references.h"

/// Everything that a run reads, to be run as often as one likes.
struct Trial {
  /// Parameters at their presets, source and destination apart, no contents yet.
  Trial(const alg::Operation& which, int width, int height)
      : operation(&which), call(alg::presetCall(which)) {
    call.width = width, call.height = height;
    alg::setResultSize(which, call);
  }

  std::size_t bytesOf(int width, int height) const {
    return alg::bytesOf(operation->pixels, asSize(width * height));
  }
  std::size_t resultBytes() const { return bytesOf(call.resultWidth, call.resultHeight); }

  /// Chooses contents for what has been chosen so far.
  void fill(Input& input) {
    const std::size_t bytes = bytesOf(call.width, call.height);
    const bool ints = operation->pixels == alg::Pixels::kInts;
    src = input.fill(int(bytes) + std::abs(shift.value_or(0)));
    for (std::size_t i = 0; ints && i < src.size(); ++i) {  // most of them are channels' values
      if (i / 4 % 7 < 4 && i % 4 != 0) src[i] = 0;
    }
    if (!shift) dst = input.fill(int(resultBytes()));
    for (const alg::PictureRole& role : operation->pictures) {
      const auto i = asSize(int(&role - operation->pictures.data()));
      // One that is not read may be missing.
      if (role.read) pictures[i] = input.fill(4 * call.pictures[i].width * call.pictures[i].height);
    }
  }

  const alg::Operation* operation;
  alg::Call call;            // without addresses
  std::optional<int> shift;  // of dst from src, in bytes, in one block of memory; none: apart
  Bytes src, dst;            // src is the block of both where they share one
  Bytes pictures[alg::kMostPictures];
};

/// Runs it in blocks of just the sizes, each a Block of some bytes, and returns what those hold
/// then, one behind the other.
template <class Block, class Run>
Bytes resultOf(const Trial& trial, Run run) {
  const Bytes* const contents[] = {&trial.src, &trial.dst, &trial.pictures[0], &trial.pictures[1]};
  std::optional<Block> blocks[4];
  for (std::size_t i = 0; i < 4; ++i) {
    if (!contents[i]->empty()) blocks[i].emplace(*contents[i]);
  }
  alg::Call call = trial.call;
  call.src = blocks[0]->data() + std::max(-trial.shift.value_or(0), 0);
  call.dst = trial.shift ? blocks[0]->data() + std::max(*trial.shift, 0) : blocks[1]->data();
  for (std::size_t i = 0; i < alg::kMostPictures; ++i) {
    if (blocks[2 + i]) call.pictures[i].pixels = blocks[2 + i]->data();
  }
  run(call);
  Bytes all;
  for (std::size_t i = 0; i < 4; ++i) {
    if (blocks[i]) {
      all.insert(all.end(), blocks[i]->data(), blocks[i]->data() + contents[i]->size());
    }
  }
  return all;
}

/// A parameter's preset, least, most, or something between.
inline double anyValue(const alg::Parameter& parameter, Input& input) {
  const int choice = input.byte() % 5;
  if (choice == 0) return parameter.preset;
  if (choice == 1) return parameter.least;
  if (choice == 2) return parameter.most;
  const double range = parameter.most - parameter.least;
  if (parameter.step > 0) {
    return parameter.least + parameter.step * input.upTo(int(range / parameter.step));
  }
  // Sizes of images are where things change, be the range ever so long.
  if (range > 65535) return parameter.least + input.upTo(choice == 3 ? 300 : 65535);
  const double value = parameter.least + range * input.upTo(65535) / 65535;
  return parameter.type == alg::Parameter::Type::kInteger ? std::floor(value) : value;
}

/// The size of picture `i`.
inline void choosePictureSize(alg::Call& call, std::size_t i, const alg::PictureRole& role,
                              Input& input) {
  using Size = alg::PictureRole::Size;
  auto& [pixels, width, height] = call.pictures[i];
  if (role.size == Size::kSameAsImage) {
    width = call.width, height = call.height;
  } else if (role.size == Size::kCoversTheFirst) {
    width = call.pictures[0].width + input.upTo(3),
    height = call.pictures[0].height + input.upTo(3);
  } else {
    width = input.side(5000), height = input.side(6000 / width);
  }
}

/// A run of any kind that the operation's row allows for images of that size. Results of a size
/// that a caller chooses have up to mostPixels.
inline Trial anyTrial(const alg::Operation& operation, int width, int height, int mostPixels,
                      Input& input) {
  Trial trial(operation, width, height);
  alg::Call& call = trial.call;
  for (std::size_t i = 0; i < operation.parameters.size(); ++i) {
    call.values[i] = anyValue(operation.parameters[i], input);
  }
  if (operation.name == std::string_view("paste")) {  // a rectangle that lies inside
    for (std::size_t i = 0; i < 4; ++i) {
      call.values[i] = std::min(int(call.values[i]), i % 2 == 0 ? width : height);
    }
  }
  alg::setResultSize(operation, call);
  if (operation.resultSize == alg::ResultSize::kChosen) {
    call.resultWidth = input.side(mostPixels);
    call.resultHeight = input.side(mostPixels / call.resultWidth);
    if (input.byte() % 2 != 0) std::swap(call.resultWidth, call.resultHeight);
  }
  for (std::size_t i = 0; i < operation.pictures.size(); ++i) {
    choosePictureSize(call, i, operation.pictures[i], input);
  }
  const int overlap = input.byte() % 4;
  if (overlap == 1 && operation.overlap != alg::Overlap::kApart) trial.shift = 0;
  if (overlap > 1 && operation.overlap == alg::Overlap::kAny) {
    trial.shift = input.upTo(overlap == 2 ? 12 : 600) - (overlap == 2 ? 6 : 300);
  }
  trial.fill(input);
  return trial;
}
