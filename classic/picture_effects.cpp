// The two effects that blend pictures of the device into the image.
#include <algorithm>
#include <cstddef>

#include "base/image_size.h"
#include "classic/picture_rows.h"
#include "kernels/overlap.h"
#include "kernels/stretched_rows.h"
#include "libalgorithm/classic_effects.h"
#include "platform/bitmap.h"

namespace {

/// Calls work(src, dst, row, first column, pixels) for pieces of rows in memory order, no pixel of
/// which is read after one of them was written.
template <class Work>
void forEachPiece(const uint8_t* src, uint8_t* dst, int width, int height, Work work) {
  const auto columns = static_cast<std::size_t>(width);
  const std::size_t piece =
      alg::pixelsAtATime(src, dst, columns * static_cast<std::size_t>(height));
  for (int row = 0; row < height; ++row) {
    for (std::size_t x = 0; x < columns;) {
      const std::size_t pixels = std::min(piece, columns - x);
      work(src, dst, row, x, pixels);
      x += pixels;
      src += alg::kPackedBytes * pixels;
      dst += alg::kPackedBytes * pixels;
    }
  }
}

uint8_t addLimited(int a, int b) { return static_cast<uint8_t>(a + b < 255 ? a + b : 255); }

uint8_t layOver(int alpha, int front, int value) {
  return static_cast<uint8_t>((alpha * front + (255 - alpha) * value) >> 8);
}

}  // namespace

namespace alg {

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

void Colorpaint(unsigned char* src, unsigned char* dst, int width, int height) {
  if (!alg::decodeEffectPicture("colorpaint.png", alg::bitmap_effect)) {
    return;
  }
  const uint8_t* picture = alg::bitmap_effect.pixels.get();
  alg::StretchedRows paint(alg::bitmap_effect.width, alg::bitmap_effect.height, width, height,
                           alg::StretchedPixels::kPackedCrossed);
  if (!paint.any()) {
    return;
  }
  forEachPiece(src, dst, width, height,
               [&](const uint8_t* from, uint8_t* to, int y, std::size_t x, std::size_t pixels) {
                 const uint8_t* row = paint.row(picture, y);
                 alg::paintRow(from, row + alg::kPackedBytes * x, to, pixels);
               });
}

void areaeffect(unsigned char* src, unsigned char* dst, int width, int height) {
  // Both are decoded whatever becomes of the first: the bitmaps outlive the call.
  const bool hasFront = alg::decodeEffectPicture("front.png", alg::bitmap_front);
  const bool hasEffect = alg::decodeEffectPicture("effect.png", alg::bitmap_effect);
  const alg::Bitmap& front = alg::bitmap_front;
  const alg::Bitmap& effect = alg::bitmap_effect;
  if (!hasFront || !hasEffect || effect.width < front.width || effect.height < front.height) {
    return;
  }
  // The offset in the front picture counts in both, in a wider effect picture, too: there it lies
  // in another column or row, but always inside.
  constexpr auto kWhole = alg::StretchedPixels::kWhole;
  alg::StretchedRows over(front.width, front.height, width, height, kWhole);
  alg::StretchedRows mask(front.width, front.height, width, height, kWhole);
  if (!over.any() || !mask.any()) {
    return;
  }
  const uint8_t* frontPixels = front.pixels.get();
  const uint8_t* effectPixels = effect.pixels.get();
  forEachPiece(src, dst, width, height,
               [&](const uint8_t* from, uint8_t* to, int y, std::size_t x, std::size_t pixels) {
                 const std::size_t offset = alg::kArgbBytes * x;
                 alg::layRow(from, over.row(frontPixels, y) + offset,
                             mask.row(effectPixels, y) + offset, to, pixels);
               });
}
