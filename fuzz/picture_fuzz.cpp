// PNG files of any bytes, decoded and laid over frames.
#include <zlib.h>

#include "effect/pipeline.h"
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/picture_folder.h"
#include "libalgorithm/classic_effects.h"
#include "platform/bitmap.h"

namespace {

constexpr uint32_t kMostPixels = 1u << 22;

uint32_t bigEndian(const uint8_t* p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

/// Gives each chunk (length, kind, content, checksum) the checksum of what it holds: else hardly a
/// changed file would get past it. False when the header asks for more than a quick run can hold.
bool repair(Bytes& png) {
  constexpr std::size_t kSignature = 8, kAround = 12;
  if (png.size() < kSignature + kAround + 8) return true;
  const uint64_t width = bigEndian(&png[16]), height = bigEndian(&png[20]);
  std::size_t left = png.size() - kSignature;
  for (uint8_t* chunk = &png[kSignature]; left >= kAround;) {
    const std::size_t length = bigEndian(chunk);
    if (length > left - kAround) break;
    const auto sum = uint32_t(crc32(0, chunk + 4, uInt(length + 4)));
    for (int i = 0; i < 4; ++i) chunk[length + 8 + asSize(i)] = uint8_t(sum >> (24 - 8 * i));
    chunk += length + kAround;
    left -= length + kAround;
  }
  return width * height <= kMostPixels;
}

/// Runs the pipeline both ways over a frame, with the picture that was decoded as the reference's.
void overlay(const ref::Effect& effect, const alg::Bitmap& bitmap, const Bytes& frame, int width,
             int height) {
  ref::Picture picture{bitmap.width, bitmap.height, {}};
  picture.rgba.assign(bitmap.pixels.get(), bitmap.pixels.get() + bitmap.bytes());
  Bytes expected = frame;
  const std::ptrdiff_t chroma = std::ptrdiff_t{width} * height;
  ref::pipeline(effect, bitmap.pixels ? &picture : nullptr, expected.data(),
                expected.data() + chroma, {width, height, width, width});
  for (const alg::Passes passes : {alg::Passes::kFewest, alg::Passes::kThree}) {
    Bytes got = frame;
    const alg::Frame where{got.data(), got.data() + chroma, width, height, width, width};
    expectThat(
        alg::runEffect({.name = effect.name.c_str()}, where, passes) != alg::Outcome::kNoMemory,
        "the pipeline runs");
    expectSame(got, expected, "the frame below the picture");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const PictureFolder folder;
  Input input(data, size);
  const int kind = input.byte() % 4, width = input.side(60), height = input.side(60);
  Bytes png(input.rest().begin(), input.rest().end());
  if (!repair(png)) return 0;
  folder.write(png);

  alg::Bitmap bitmap;
  decodePngFile("/picture", bitmap);
  const uint8_t* pixels = bitmap.pixels.get();
  for (std::size_t i = 0; i < bitmap.bytes(); ++i) {
    expectThat(pixels[i] <= pixels[i | 3], "no colour is above its alpha");
  }
  if (kind < 2) {
    const std::string name = kind == 0 ? "PrettyPink" : "PrettyJapan";
    overlay(*std::ranges::find(ref::kEffects, name, &ref::Effect::name), bitmap,
            input.fill(width * height * 3 / 2), width, height);
    return 0;
  }
  Bytes src = input.fill(width * height * 3), dst = src;
  (kind == 2 ? Colorpaint : areaeffect)(src.data(), dst.data(), width, height);
  return 0;
}
