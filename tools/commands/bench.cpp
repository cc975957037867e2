#include "tools/commands/bench.h"

#include <fmt/format.h>
#include <regex.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "tools/commands/timing.h"
#include "tools/photos/size.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

/// An extended regular expression that ignores case. The C library's: compilers warn about C++'s in
/// builds with sanitizers.
class Pattern {
 public:
  /// Throws WrongUse.
  explicit Pattern(const std::string& text) {
    if (regcomp(&compiled_, text.c_str(), REG_EXTENDED | REG_ICASE | REG_NOSUB) != 0) {
      throw WrongUse(fmt::format("--filter: \"{}\" is not a regular expression", text));
    }
  }
  ~Pattern() { regfree(&compiled_); }
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  bool isIn(const char* name) const { return regexec(&compiled_, name, 0, nullptr, 0) == 0; }

 private:
  regex_t compiled_{};
};

using Bytes = std::vector<uint8_t>;

Bytes noise(std::size_t size) {
  Bytes bytes(size);
  uint32_t random = 1;
  for (uint8_t& byte : bytes) {
    random = random * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(random >> 24);
  }
  return bytes;
}

/// Noise as pixels of a kind.
Bytes noiseOf(Pixels kind, std::size_t pixels) {
  if (kind != Pixels::kInts) {
    return noise(bytesOf(kind, pixels));
  }
  const Bytes levels = noise(pixels * kPackedBytes);
  const std::vector<int> ints(levels.begin(), levels.end());
  Bytes bytes(ints.size() * sizeof(int));
  std::memcpy(bytes.data(), ints.data(), bytes.size());
  return bytes;
}

/// An operation on images of a size, and its results of the same size.
class Trial {
 public:
  Trial(const Operation& operation, Size size);
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  /// Bytes that it must read and write, each once.
  std::size_t bytesMoved() const;
  /// Its times and those of copying `bytesMoved()` bytes in all.
  PairedTimes time(double budget) const;

 private:
  const Operation& operation_;
  Bytes source_;
  Bytes result_;
  std::array<Bytes, kMostPictures> pictures_;
  Call call_;
};

Trial::Trial(const Operation& operation, Size size)
    : operation_(operation),
      source_(noiseOf(operation.pixels, size.pixels())),
      result_(source_),
      call_(presetCall(operation)) {
  call_.src = source_.data();
  call_.dst = result_.data();
  call_.width = call_.resultWidth = size.width;
  call_.height = call_.resultHeight = size.height;
  std::size_t i = 0;
  for (const PictureRole& role : operation.pictures) {
    constexpr Size kOverlay{720, 960};
    const Size picture = role.size == PictureRole::Size::kSameAsImage ? size : kOverlay;
    pictures_[i] = noise(bytesOf(Pixels::kWords, picture.pixels()));
    call_.pictures[i] = {pictures_[i].data(), picture.width, picture.height};
    ++i;
  }
}

std::size_t Trial::bytesMoved() const {
  std::ptrdiff_t images = 2;
  images +=
      std::ranges::count(operation_.pictures, PictureRole::Size::kSameAsImage, &PictureRole::size);
  // Other operations that read the destination keep just a few pixels of it.
  images += operation_.readsDestination && operation_.bands == Bands::kAny ? 1 : 0;
  return source_.size() * static_cast<std::size_t>(images);
}

PairedTimes Trial::time(double budget) const {
  const Bytes from(bytesMoved() / 2, 1);
  Bytes to(from.size());
  return timePairs([&] { operation_.run(call_); },
                   [&] { std::memcpy(to.data(), from.data(), from.size()); }, budget);
}

constexpr auto kRow = "{:<15} {:<33} {:>9} {:>7} {:>10}\n";

void printRow(const Operation& operation, Size size, double budget) {
  const Trial trial(operation, size);
  const auto [time, copyTime] = trial.time(budget);
  fmt::print(fmt::runtime(kRow), operation.name, operation.routine,
             fmt::format("{:.2f}", time * 1e3),
             fmt::format("{:.2f}", static_cast<double>(trial.bytesMoved()) / time / 1e9),
             fmt::format("{:.2f}", copyTime / time));
  std::fflush(stdout);
}

}  // namespace

void benchOperations(const BenchRequest& request) {
  const Size size = parseSize(request.size, kLongestSide);
  const Pattern wanted(request.filter);
  std::vector<const Operation*> chosen;
  std::ranges::copy_if(operations(), std::back_inserter(chosen), [&](const Operation* operation) {
    return wanted.isIn(operation->name) || wanted.isIn(operation->routine);
  });
  if (chosen.empty()) {
    throw WrongUse(fmt::format("no operation's or routine's name matches \"{}\"", request.filter));
  }
  fmt::print(fmt::runtime(kRow), "OPERATION", "ROUTINE", "MS", "GB/S", "OF MEMCPY");
  for (const Operation* operation : chosen) {
    printRow(*operation, size, request.seconds);
  }
}

}  // namespace alg::tool
