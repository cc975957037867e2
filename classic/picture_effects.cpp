// The two effects that blend pictures of the device into the image.
#include <cstddef>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/picture_rows.h"
#include "kernels/overlap.h"
#include "kernels/stretched_rows.h"
#include "libalgorithm/classic_effects.h"
#include "platform/bitmap.h"

namespace alg {
namespace {

PictureView viewOf(const Bitmap& bitmap) {
  return {bitmap.pixels.get(), bitmap.width, bitmap.height};
}

void paintOver(const Call& call) {
  const PictureView& picture = call.pictures[0];
  StretchedRows paint(picture.width, picture.height, call.width, call.rowsOfImage(),
                      StretchedPixels::kPackedCrossed);
  if (!paint.any()) {
    return;
  }
  forEachPiece(call.src, call.dst, call.width, call.height,
               [&](const uint8_t* src, uint8_t* dst, int y, std::size_t x, std::size_t pixels) {
                 const uint8_t* row = paint.row(picture.pixels, call.firstRow + y);
                 paintRow(src, row + kPackedBytes * x, dst, pixels);
               });
}

void layOverAndInvert(const Call& call) {
  const PictureView& front = call.pictures[0];
  const PictureView& mask = call.pictures[1];
  if (mask.width < front.width || mask.height < front.height) {
    return;
  }
  // The offset in the front picture counts in both, in a wider mask, too: there it lies in another
  // column or row, but always inside.
  constexpr auto kWhole = StretchedPixels::kWhole;
  StretchedRows over(front.width, front.height, call.width, call.rowsOfImage(), kWhole);
  StretchedRows inverting(front.width, front.height, call.width, call.rowsOfImage(), kWhole);
  if (!over.any() || !inverting.any()) {
    return;
  }
  forEachPiece(call.src, call.dst, call.width, call.height,
               [&](const uint8_t* src, uint8_t* dst, int y, std::size_t x, std::size_t pixels) {
                 const std::size_t offset = kArgbBytes * x;
                 const int row = call.firstRow + y;
                 layRow(src, over.row(front.pixels, row) + offset,
                        inverting.row(mask.pixels, row) + offset, dst, pixels);
               });
}

}  // namespace

namespace operation {

constexpr PictureRole kColorPaintPictures[] = {
    {.name = "picture", .file = "colorpaint.png", .help = "the colours"}};

constinit const Operation kColorPaint{
    .name = "color-paint",
    .routine = "Colorpaint",
    .family = Family::kPicture,
    .shows = "Washed over with the colours of a picture.",
    .formula = "The picture's values are added.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kPlace,
    .pictures = kColorPaintPictures,
    .pipeline = {.name = "colorpaint_effect", .identifier = 19, .strips = 1},
    .run = paintOver,
};

constexpr PictureRole kAreaPictures[] = {
    {.name = "front", .file = "front.png", .help = "the surrounding picture, with transparency"},
    {.name = "mask",
     .file = "effect.png",
     .size = PictureRole::Size::kCoversTheFirst,
     .help = "not transparent where the photo is inverted"}};

constinit const Operation kArea{
    .name = "area",
    .routine = "areaeffect",
    .family = Family::kPicture,
    .shows = "Framed by a picture, and inverted where a mask is not transparent.",
    .formula =
        "The front picture, its colours already premultiplied, is composited with its alpha again.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kPlace,
    .pictures = kAreaPictures,
    .pipeline = {.name = "area_effect", .identifier = 15, .strips = 1},
    .run = layOverAndInvert,
};

}  // namespace operation
}  // namespace alg

void Colorpaint(unsigned char* src, unsigned char* dst, int width, int height) {
  if (alg::decodeEffectPicture(alg::operation::kColorPaint.pictures[0].file, alg::bitmap_effect)) {
    alg::paintOver({.src = src,
                    .dst = dst,
                    .width = width,
                    .height = height,
                    .pictures = {alg::viewOf(alg::bitmap_effect)}});
  }
}

void areaeffect(unsigned char* src, unsigned char* dst, int width, int height) {
  const auto pictures = alg::operation::kArea.pictures;
  // Both are decoded whatever becomes of the first: the bitmaps outlive the call.
  const bool hasFront = alg::decodeEffectPicture(pictures[0].file, alg::bitmap_front);
  const bool hasMask = alg::decodeEffectPicture(pictures[1].file, alg::bitmap_effect);
  if (hasFront && hasMask) {
    alg::layOverAndInvert(
        {.src = src,
         .dst = dst,
         .width = width,
         .height = height,
         .pictures = {alg::viewOf(alg::bitmap_front), alg::viewOf(alg::bitmap_effect)}});
  }
}
