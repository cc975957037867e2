// The definition of nature's row kernel.
#include "classic/nature_rows.h"

#include <algorithm>

#include "base/image_size.h"
#include "kernels/curve_steps.h"

namespace alg {
namespace {

struct Reciprocals {
  float of[256];  // 1 / i, and 0 for 0
};

const Reciprocals& reciprocals() {
  static const Reciprocals kReciprocals = [] {
    Reciprocals r;
    r.of[0] = 0;
    for (int i = 1; i < 256; ++i) {
      r.of[i] = static_cast<float>(1.0 / i);
    }
    return r;
  }();
  return kReciprocals;
}

uint8_t saturate(int c, float reciprocal, float s) {
  const auto k = static_cast<int>(c * c * static_cast<double>(reciprocal));
  // Both the product and the sum fit 40 bits, so that they are exact: this equals a fused step.
  const double v = (c * (1.0 - s)) + static_cast<double>(static_cast<float>(k) * s);
  return contrastBy(1.5, static_cast<int>(v));
}

void boost(const uint8_t* pixel, const uint8_t* neighbour, uint8_t* out, const Reciprocals& r) {
  const int b = pixel[0], g = pixel[1], red = pixel[2];
  const int neighbourMax = std::max({neighbour[0], neighbour[1], neighbour[2]});
  const int max = std::max({b, g, red, neighbourMax});
  // The neighbour counts with its blue or with its maximum, never with its true minimum.
  const bool blueIsLeast = neighbour[0] < std::min(neighbour[1], neighbour[2]);
  const int min = std::min({b, g, red, blueIsLeast ? int{neighbour[0]} : neighbourMax});
  const float reciprocal = r.of[max];
  const float s = static_cast<float>(max - min) * reciprocal;
  out[0] = saturate(red, reciprocal, s);
  out[1] = saturate(g, reciprocal, s);
  out[2] = saturate(b, reciprocal, s);
}

}  // namespace

void boostRowPlain(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out,
                   std::size_t count) {
  const Reciprocals& r = reciprocals();
  for (std::size_t i = 0; i < kPackedBytes * count; i += kPackedBytes) {
    boost(pixels + i, neighbours + i, out + i, r);
  }
}

}  // namespace alg
