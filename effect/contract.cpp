// The pipeline's exported entry points, thin layers over it.
#include <cstddef>

#include "effect/chosen_effect.h"
#include "effect/pipeline.h"
#include "effect/strip_effect.h"
#include "libalgorithm/effect_pipeline.h"

// Records cross the library's boundary, to and from callers that were built separately.
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

EffectTypeInfo effectTypeInit(const char* name, int width, int height) {
  return alg::ChosenEffect({.name = name}, width, height, alg::ChosenEffect::Purpose::kReport)
      .record();
}

void EffectFunction(const void* input, const void* /*param*/, void* output) {
  const auto& in = *static_cast<const RgbStripDesc*>(input);
  const auto& out = *static_cast<const RgbStripDesc*>(output);
  alg::StripEffect(alg::findPipelineEffect(in.effectId),
                   {in.overlay, in.overlayWidth, in.overlayRows}, in.width, in.rows)
      .mapRows(in.pixels, out.pixels, 0, in.rows);
}

void KAVRO_PrettyEffect_Function(const char* effectName, const char* /*format*/, uint8_t* y,
                                 uint8_t* uv, int height, int width, int yStride, int uvStride) {
  alg::runEffect({.name = effectName}, {y, uv, width, height, yStride, uvStride});
}
