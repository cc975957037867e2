// The definitions of the picture effects' row kernels.
#include "classic/picture_rows.h"

#include "base/image_size.h"

namespace alg {
namespace {

uint8_t addLimited(int a, int b) { return static_cast<uint8_t>(a + b < 255 ? a + b : 255); }

uint8_t layOver(int alpha, int front, int value) {
  return static_cast<uint8_t>((alpha * front + (255 - alpha) * value) >> 8);
}

}  // namespace

void paintRowPlain(const uint8_t* src, const uint8_t* paint, uint8_t* dst, std::size_t pixels) {
  for (std::size_t i = 0; i < kPackedBytes * pixels; i += kPackedBytes) {
    const uint8_t pixel[] = {src[i], src[i + 1], src[i + 2]};
    dst[i] = addLimited(pixel[2], paint[i + 2]);
    dst[i + 1] = addLimited(pixel[1], paint[i + 1]);
    dst[i + 2] = addLimited(pixel[0], paint[i]);
  }
}

void layRowPlain(const uint8_t* src, const uint8_t* front, const uint8_t* mask, uint8_t* dst,
                 std::size_t pixels) {
  for (std::size_t i = 0; i < pixels;
       ++i, src += kPackedBytes, dst += kPackedBytes, front += kArgbBytes, mask += kArgbBytes) {
    const int inverting = mask[3] != 0 ? 255 : 0;  // 255 - v = 255 ^ v
    const uint8_t pixel[] = {src[0], src[1], src[2]};
    dst[0] = layOver(front[3], front[0], pixel[2] ^ inverting);
    dst[1] = layOver(front[3], front[1], pixel[1] ^ inverting);
    dst[2] = layOver(front[3], front[2], pixel[0] ^ inverting);
  }
}

}  // namespace alg
