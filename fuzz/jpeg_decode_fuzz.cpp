// JPEG files of any bytes: decoded as Java asks for them, and at reduced sizes.
#include "codec/jpeg_bridge.h"
#include "fuzz/check.h"
#include "fuzz/input.h"

namespace {

constexpr int64_t kMostPixels = int64_t{1} << 20;

/// Whether any frame header asks for more pixels than a quick run can hold.
bool tooLarge(std::span<const uint8_t> file) {
  for (std::size_t at = 0; at + 9 <= file.size(); ++at) {
    const int64_t height = file[at + 5] << 8 | file[at + 6],
                  width = file[at + 7] << 8 | file[at + 8];
    const bool frame = file[at] == 0xFF && file[at + 1] >= 0xC0 && file[at + 1] <= 0xCF;
    if (frame && width * height > kMostPixels) return true;
  }
  return false;
}

void checkImage(const alg::DecodedJpeg& image) {
  expectThat(image.width > 0 && image.height > 0, "a decoded image has pixels");
  for (std::size_t i = 3; i < 4 * asSize(image.width) * asSize(image.height); i += 4) {
    expectThat(image.pixels[i] == 255, "decoded pixels are opaque");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (tooLarge({data, size})) return 0;
  const auto whole = alg::jpegToArgb(data, size);
  if (!whole) return 0;
  checkImage(*whole);
  const int side = std::max(whole->width, whole->height);
  for (const int keepSide : {1, side / 3 + 1}) {
    const auto reduced = alg::decodeJpeg({data, size}, {.keepSide = keepSide});
    expectThat(reduced.has_value(), "what decodes also decodes at a reduced size");
    checkImage(*reduced);
    expectThat(std::max(reduced->width, reduced->height) >= std::min(keepSide, side),
               "a reduced image keeps its longer side");
  }
  return 0;
}
