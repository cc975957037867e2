#include "effect/frame_strips.h"

#include <cstddef>

#include "base/image_size.h"

// Records cross the library's border, to and from callers that were built apart from it.
static_assert(offsetof(EffectTypeInfo, overlay) == 0 &&
              offsetof(EffectTypeInfo, overlayWidth) == 8 &&
              offsetof(EffectTypeInfo, overlayHeight) == 12 &&
              offsetof(EffectTypeInfo, effectId) == 16 &&
              offsetof(EffectTypeInfo, stripCount) == 20 &&
              offsetof(EffectTypeInfo, effectFlag) == 24 && sizeof(EffectTypeInfo) == 32);
static_assert(offsetof(YuvStripDesc, y) == 0 && offsetof(YuvStripDesc, uv) == 8 &&
              offsetof(YuvStripDesc, width) == 16 && offsetof(YuvStripDesc, rows) == 20 &&
              offsetof(YuvStripDesc, yStride) == 24 && offsetof(YuvStripDesc, uvStride) == 28 &&
              sizeof(YuvStripDesc) == 32);
static_assert(offsetof(RgbStripDesc, pixels) == 0 && offsetof(RgbStripDesc, width) == 8 &&
              offsetof(RgbStripDesc, rows) == 12 && offsetof(RgbStripDesc, yStride) == 16 &&
              offsetof(RgbStripDesc, uvStride) == 20 && offsetof(RgbStripDesc, channels) == 24 &&
              offsetof(RgbStripDesc, effectId) == 28 && offsetof(RgbStripDesc, effectFlag) == 32 &&
              offsetof(RgbStripDesc, overlay) == 40 && offsetof(RgbStripDesc, overlayWidth) == 48 &&
              offsetof(RgbStripDesc, overlayRows) == 52 && sizeof(RgbStripDesc) == 56);
static_assert(offsetof(StripRange, reserved) == 0 && offsetof(StripRange, firstRow) == 4 &&
              offsetof(StripRange, imageHeight) == 8 && sizeof(StripRange) == 12);

namespace alg {

YuvStripDesc yuvStrip(const Frame& frame, const Strip& strip) {
  return {frame.y + std::ptrdiff_t{strip.firstRow} * frame.yStride,
          frame.uv + std::ptrdiff_t{strip.firstRow / 2} * frame.uvStride,
          frame.width,
          strip.rows,
          frame.yStride,
          frame.uvStride};
}

RgbStripDesc rgbStrip(const Frame& frame, const Strip& strip, uint8_t* pixels) {
  RgbStripDesc desc{};
  desc.pixels = pixels;
  desc.width = frame.width;
  desc.rows = strip.rows;
  desc.yStride = frame.yStride;
  desc.uvStride = frame.uvStride;
  desc.channels = kPackedBytes;
  return desc;
}

void addEffect(RgbStripDesc& desc, const EffectTypeInfo& effect, int index) {
  const auto width = static_cast<uint32_t>(effect.overlayWidth);
  const auto height = static_cast<uint32_t>(effect.overlayHeight);
  const auto count = static_cast<uint32_t>(effect.stripCount);
  desc.effectId = effect.effectId;
  desc.effectFlag = effect.effectFlag;
  desc.overlay = effect.overlay + static_cast<uint32_t>(index) * (width * height * 4 / count);
  desc.overlayWidth = effect.overlayWidth;
  desc.overlayRows = static_cast<int32_t>(height / count);
}

}  // namespace alg
