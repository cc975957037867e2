#include "effect/strip_effect.h"

#include "kernels/curve_map.h"

namespace alg {
namespace {

void exchange(const uint8_t* src, uint8_t* dst, int width, int rows) {
  constexpr auto kSame = [](int v) { return static_cast<uint8_t>(v); };
  static const Curves kIdentity = makeCurves(kSame, kSame, kSame);
  mapCurves(src, dst, width, rows, kIdentity);
}

}  // namespace

StripEffect::StripEffect(const Operation* operation, const PictureView& picture, int width,
                         int rows)
    : operation_(operation), picture_(picture), width_(width), rows_(rows) {
  if (operation != nullptr && operation->softLight != nullptr) {
    image_.emplace(operation->softLight(), Overlay{picture.pixels, picture.width, picture.height},
                   width, rows);
  }
}

void StripEffect::moveTo(const PictureView& picture, int rows) {
  picture_ = picture;
  rows_ = rows;
  if (image_) {
    image_->moveTo(picture.pixels, rows);
  }
}

void StripEffect::mapRows(uint8_t* src, uint8_t* dst, int firstRow, int rows) {
  if (operation_ == nullptr || !ready()) {
    exchange(src, dst, width_, rows);
  } else if (image_) {
    image_->mapRows(src, dst, firstRow, rows);
  } else {
    operation_->run({.src = src,
                     .dst = dst,
                     .width = width_,
                     .height = rows,
                     .firstRow = firstRow,
                     .imageHeight = rows_,
                     .pictures = {picture_}});
  }
}

}  // namespace alg
