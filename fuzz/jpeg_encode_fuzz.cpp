// JPEG encoding: any sizes and quality; what comes out must decode to the same size.
#include "codec/jpeg_bridge.h"
#include "fuzz/check.h"
#include "fuzz/input.h"

namespace {

constexpr int kLongestSide = 65500;  // that the codec takes
constexpr int kMostPixels = kLongestSide;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int quality = input.byte() % 2 == 0 ? input.upTo(100) : int(input.word());
  if (input.byte() == 0) {  // sizes that no JPEG can have: no pixel may be read
    int width = int(input.word()), height = int(input.word());
    if (width > 0 && width <= kLongestSide && height > 0) height = kLongestSide + 1;
    expectThat(!alg::argbToJpeg(nullptr, width, height, quality), "impossible sizes are refused");
    return 0;
  }
  int width = input.side(kLongestSide), height = input.side(kMostPixels / width);
  if (input.byte() % 2 != 0) std::swap(width, height);
  const Bytes pixels = input.fill(width * height * 4);
  const auto file = alg::argbToJpeg(pixels.data(), width, height, quality);
  expectThat(file && file->size > 0, "an image that a JPEG can hold is encoded");
  const auto image = alg::jpegToArgb(file->bytes.get(), file->size);
  expectThat(image && image->width == width && image->height == height, "an encoded image decodes");
  return 0;
}
