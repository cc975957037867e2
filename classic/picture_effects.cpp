// The two effects that blend pictures of the device into the image.
#include <cstddef>

#include "base/image_size.h"
#include "classic/picture_rows.h"
#include "kernels/overlap.h"
#include "kernels/stretched_rows.h"
#include "libalgorithm/classic_effects.h"
#include "platform/bitmap.h"

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
  alg::forEachPiece(
      src, dst, width, height,
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
  alg::forEachPiece(
      src, dst, width, height,
      [&](const uint8_t* from, uint8_t* to, int y, std::size_t x, std::size_t pixels) {
        const std::size_t offset = alg::kArgbBytes * x;
        alg::layRow(from, over.row(frontPixels, y) + offset, mask.row(effectPixels, y) + offset, to,
                    pixels);
      });
}
