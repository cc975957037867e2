// The whole-image converters.
#include "libalgorithm/yuv_convert.h"

#include <algorithm>
#include <cstddef>

#include "base/clamp.h"
#include "convert/bt601.h"
#include "convert/frame_convert.h"

using alg::RowFormat;

void decodeYUV2ARGB_LUT(uint32_t* argb, const uint8_t* luma, const uint8_t* chroma, int width,
                        int height, int yStride, int uvStride) {
  alg::decodeFrame(RowFormat::kArgbUV, reinterpret_cast<uint8_t*>(argb),
                   {.luma = luma, .chroma = chroma, .yStride = yStride, .uvStride = uvStride},
                   width, height);
}

void decodeYVU2ARGB_OpenGL(uint32_t* argb, const uint8_t* luma, const uint8_t* chroma, int width,
                           int height, int yStride, int uvStride) {
  alg::decodeFrame(RowFormat::kArgbVU, reinterpret_cast<uint8_t*>(argb),
                   {.luma = luma, .chroma = chroma, .yStride = yStride, .uvStride = uvStride},
                   width, height);
}

void decodeARGB2YUV_OpenGL(const uint32_t* argb, uint8_t* luma, uint8_t* chroma, int width,
                           int height, int yStride, int uvStride) {
  alg::encodeFrame(RowFormat::kArgbUV, reinterpret_cast<const uint8_t*>(argb),
                   {.luma = luma, .chroma = chroma, .yStride = yStride, .uvStride = uvStride},
                   width, height);
}

void decodeARGB2YVU_OpenGL(const uint32_t* argb, uint8_t* luma, uint8_t* chroma, int width,
                           int height, int yStride, int uvStride) {
  alg::encodeFrame(RowFormat::kArgbVU, reinterpret_cast<const uint8_t*>(argb),
                   {.luma = luma, .chroma = chroma, .yStride = yStride, .uvStride = uvStride},
                   width, height);
}

void decodeARGB2YUV420P(void* context, PixelFetchFunc fetch, uint8_t* y, uint8_t* u, int width,
                        int height, int yStride) {
  if (width < 1 || height < 1) {
    return;
  }
  const int planeBytes = width * height / 4;
  uint8_t* const v = u + planeBytes;
  int red = 0, green = 0, blue = 0;
  const auto sample = [&](const alg::bt601::Weights& weights) {
    return alg::clampToByte(weights.apply(red, green, blue));
  };
  const auto pull = [&](int index, uint8_t* luma) {
    fetch(context, index, &red, &green, &blue);
    *luma = sample(alg::bt601::kY);
  };
  int block = 0;
  for (int j = 0; j < height; j += 2) {
    const int below = std::min(j + 1, height - 1);
    const int top = j * width, bottom = below * width;
    uint8_t* const upper = y + std::ptrdiff_t{j} * yStride;
    uint8_t* const lower = y + std::ptrdiff_t{below} * yStride;
    for (int x = 0; x < width; x += 2, ++block) {
      const int right = std::min(x + 1, width - 1);
      pull(top + x, upper + x);
      pull(top + right, upper + right);
      pull(bottom + right, lower + right);
      pull(bottom + x, lower + x);  // of which the chroma is taken
      if (block < planeBytes) {
        u[block] = sample(alg::bt601::kU);
        v[block] = sample(alg::bt601::kV);
      }
    }
  }
}
