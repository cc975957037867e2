// The strip converters of the effect pipeline and their callbacks.
#include "convert/frame_convert.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/yuv_convert.h"

using alg::RowFormat;

void decodeYUV2ARGB_jni(uint8_t* rgbOut, uint8_t* y, uint8_t* uv, int width, int height,
                        int yStride, int uvStride) {
  alg::decodeFrame(RowFormat::kPackedUV, rgbOut,
                   {.luma = y, .chroma = uv, .yStride = yStride, .uvStride = uvStride}, width,
                   height);
}

void decodeARGB2YUV_jni(uint8_t* rgbIn, uint8_t* y, uint8_t* uv, int width, int height, int yStride,
                        int uvStride) {
  alg::encodeFrame(RowFormat::kPackedUV, rgbIn,
                   {.luma = y, .chroma = uv, .yStride = yStride, .uvStride = uvStride}, width,
                   height);
}

void YUV2RGB(const void* input, const void* /*param*/, void* output) {
  const auto& yuv = *static_cast<const YuvStripDesc*>(input);
  const auto& rgb = *static_cast<const RgbStripDesc*>(output);
  decodeYUV2ARGB_jni(rgb.pixels, yuv.y, yuv.uv, yuv.width, yuv.rows, yuv.yStride, yuv.uvStride);
}

void RGB2YUV(const void* input, const void* /*param*/, void* output) {
  const auto& rgb = *static_cast<const RgbStripDesc*>(input);
  const auto& yuv = *static_cast<const YuvStripDesc*>(output);
  decodeARGB2YUV_jni(rgb.pixels, yuv.y, yuv.uv, rgb.width, rgb.rows, rgb.yStride, rgb.uvStride);
}
