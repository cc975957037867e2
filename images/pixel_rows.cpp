// The definitions of the pixel row kernels.
#include "images/pixel_rows.h"

namespace alg {
namespace {

/// Where byte k of a pixel comes from.
std::size_t from(std::size_t k, ByteOrder order) { return order == ByteOrder::kKept ? k : 2 - k; }

}  // namespace

void packRowPlain(const uint8_t* pixels, uint8_t* packed, std::size_t count, ByteOrder order) {
  for (std::size_t i = 0; i < count; ++i, pixels += 4, packed += 3) {
    for (std::size_t k = 0; k < 3; ++k) {
      packed[k] = pixels[from(k, order)];
    }
  }
}

void unpackRowPlain(const uint8_t* packed, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
                    ByteOrder order) {
  for (std::size_t i = 0; i < count; ++i, packed += 3, alpha += 4, pixels += 4) {
    const uint8_t opacity = alpha[3];
    for (std::size_t k = 0; k < 3; ++k) {
      pixels[k] = packed[from(k, order)];
    }
    pixels[3] = opacity;
  }
}

void colourRowPlain(const uint8_t* colours, const uint8_t* alpha, uint8_t* pixels,
                    std::size_t count, ByteOrder order) {
  for (std::size_t i = 0; i < count; ++i, colours += 4, alpha += 4, pixels += 4) {
    const uint8_t pixel[] = {colours[from(0, order)], colours[1], colours[from(2, order)],
                             alpha[3]};
    for (std::size_t k = 0; k < 4; ++k) {
      pixels[k] = pixel[k];
    }
  }
}

void mixRowPlain(const uint8_t* from, const uint8_t* to, uint8_t* mixed, std::size_t bytes,
                 int weight) {
  for (std::size_t i = 0; i < bytes; ++i) {
    mixed[i] =
        static_cast<uint8_t>((from[i] * (kWholeWeight - weight) + to[i] * weight + 128) >> 8);
  }
}

}  // namespace alg
