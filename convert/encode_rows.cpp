// The definitions of the encoding row kernels.
#include "convert/encode_rows.h"

#include "convert/bt601.h"

namespace alg {
namespace {

struct Rgb {
  int32_t r, g, b;
};

Rgb loadPixel(RowFormat format, const uint8_t* p) {
  return encodesRedFirst(format) ? Rgb{p[0], p[1], p[2]} : Rgb{p[2], p[1], p[0]};
}

}  // namespace

void encodeLumaRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x) {
    const Rgb p = loadPixel(format, pixels + pixelBytes(format) * x);
    luma[x] = static_cast<uint8_t>(bt601::kY.apply(p.r, p.g, p.b));
  }
}

void encodeRowPlain(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
                    std::size_t width) {
  encodeLumaRowPlain(format, pixels, luma, width);
  const std::size_t uIndex = hasVFirst(format) ? 1 : 0;
  for (std::size_t x = 0; x < width; x += 2) {
    const Rgb p = loadPixel(format, pixels + pixelBytes(format) * x);
    chroma[x + uIndex] = static_cast<uint8_t>(bt601::kU.apply(p.r, p.g, p.b));
    chroma[x + 1 - uIndex] = static_cast<uint8_t>(bt601::kV.apply(p.r, p.g, p.b));
  }
}

}  // namespace alg
