// The four blurs against their definitions, strips of any ramp among them.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"
#include "tests/unit/blur_reference.h"

namespace {

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int kind = input.byte() % 5, channels = kind < 2 ? 3 : 4;
  const int width = input.side(1500), height = input.side(1500 / width);
  const int offset = input.upTo(600) - 200, rows = input.upTo(900) - 200;  // of the ramp, kind 1
  const Bytes pixels = input.fill(width * height * channels);
  Bytes expected(pixels.size());
  if (kind == 4) {
    ref::blurSquare(pixels.data(), expected.data(), width, height);
  } else {
    const ref::Ramp ramp{kind == 1, kind == 1 ? offset : 0, rows - offset - height};
    ref::blurSeparable(channels, ramp, pixels.data(), expected.data(), width, height);
  }
  onEachVectorTarget([&] {
    Bytes src = pixels, got(pixels.size(), 1);
    uint8_t *from = src.data(), *to = kind == 3 ? from : got.data();
    if (kind == 0) miniature(from, to, width, height);
    if (kind == 1) miniature_r(from, to, width, height, offset, rows);
    if (kind == 2 || kind == 3) blur(to, words(from), width, height);
    if (kind == 4) ActiveBlur(words(to), words(from), 0, width, height);
    expectSame(kind == 3 ? src : got, expected, "blurred pixels");
  });
  return 0;
}
