// The whole-image converters.
#include "libalgorithm/yuv_convert.h"

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
  const uint8_t* const end = u + planeBytes;
  int red = 0, green = 0, blue = 0;
  struct Pixel {
    int red, green, blue;

    uint8_t sample(const alg::bt601::Weights& weights) const {
      return alg::clampToByte(weights.apply(red, green, blue));
    }
  };
  const auto pull = [&](int index, uint8_t* luma) {
    fetch(context, index, &red, &green, &blue);
    const Pixel pixel{red, green, blue};  // which no store below can change
    *luma = pixel.sample(alg::bt601::kY);
    return pixel;
  };
  for (int j = 0; j < height; j += 2) {
    const int down = j + 1 < height ? 1 : 0;
    const int below = down * width;
    const std::ptrdiff_t lumaBelow = std::ptrdiff_t{down} * yStride;
    uint8_t* luma = y + std::ptrdiff_t{j} * yStride;
    const int last = (j + 1) * width - 1;
    for (int index = j * width; index <= last; index += 2, luma += 2) {
      const int right = index < last ? 1 : 0;
      pull(index, luma);
      pull(index + right, luma + right);
      pull(index + below + right, luma + lumaBelow + right);
      const Pixel bottomLeft = pull(index + below, luma + lumaBelow);
      if (u != end) {
        u[0] = bottomLeft.sample(alg::bt601::kU);
        u[planeBytes] = bottomLeft.sample(alg::bt601::kV);
        ++u;
      }
    }
  }
}
