#include "effect/frame_strips.h"

#include <cstddef>

#include "base/image_size.h"

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
