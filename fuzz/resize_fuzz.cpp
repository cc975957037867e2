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
  const Bytes src = input.fill(from.width * from.height * 4);
  Bytes expected(zu(to.width * to.height * 4));
  ref::resize(words(expected), to.width, to.height, words(src), from.width, from.height);
  onEachVectorTarget([&] {
    const Bytes got(expected.size(), 1);
    Resize(words(got), to.width, to.height, words(src), from.width, from.height);
    expectSame(got, expected, "resized words");
  });
  return 0;
}
