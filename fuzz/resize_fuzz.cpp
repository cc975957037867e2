// Resize against the reference, up to sizes whose positions leave 32 bits.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "libalgorithm/pretty_filters.h"
#include "tests/unit/resize_reference.h"

namespace {

constexpr int kLongest = 70000, kMostPixels = 6000;

struct Size {
  explicit Size(Input& input)
      : width(input.side(kLongest)), height(input.side(kMostPixels / width)) {
    if (input.byte() % 2 != 0) std::swap(width, height);
  }
  int width, height;
};

uint32_t* words(const Bytes& bytes) {
  return reinterpret_cast<uint32_t*>(const_cast<uint8_t*>(bytes.data()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Size to(input), from(input);
  const int toWords = to.width * to.height, fromWords = from.width * from.height;
  // Both images in one block or in blocks of their own. Results become sources where they overlap.
  const bool oneBlock = input.byte() % 4 == 1;
  const int shift = input.upTo(4000) - 2000, start = std::max(-shift, 0);
  const int end = std::max(start + fromWords, start + shift + toWords);
  const Bytes src = input.fill(4 * (oneBlock ? end : fromWords)), dst(zu(4 * toWords), 1);
  const auto run = [&](auto* resize) {
    Bytes result = oneBlock ? src : dst;
    uint32_t* const at = words(result) + (oneBlock ? start + shift : 0);
    resize(at, to.width, to.height, oneBlock ? words(result) + start : words(src), from.width,
           from.height);
    return result;
  };
  const Bytes expected = run(ref::resize);
  onEachVectorTarget([&] { expectSame(run(Resize), expected, "resized words"); });
  return 0;
}
