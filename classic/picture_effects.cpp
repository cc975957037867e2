// The two effects that blend pictures of the device into the image.
#include <cstddef>

#include "base/image_size.h"
#include "kernels/nearest_steps.h"
#include "libalgorithm/classic_effects.h"
#include "platform/bitmap.h"

namespace {

constexpr const char* kColorpaintPath = "/data/data/com.android.camera/effect/colorpaint.png";
constexpr const char* kFrontPath = "/data/data/com.android.camera/effect/front.png";
constexpr const char* kEffectPath = "/data/data/com.android.camera/effect/effect.png";

constexpr int kPictureBytes = 4;  // R, G, B, A

/// Calls write(pixel, dst, offset) for each pixel of the image in memory order: `pixel` is a copy
/// of the source pixel (B, G, R), so that dst may overlap src, and `offset` is the byte offset of
/// the picture's pixel there, the picture being stretched over the image by nearest neighbour.
template <class Write>
void blendStretched(const uint8_t* src, uint8_t* dst, int width, int height,
                    const alg::Bitmap& picture, Write write) {
  if (width < 1 || height < 1) {
    return;
  }
  const std::size_t pitch = static_cast<std::size_t>(picture.width) * kPictureBytes;
  alg::NearestSteps row(picture.height, height);
  for (int y = 0; y < height; ++y, row.advance()) {
    const std::size_t rowOffset = pitch * static_cast<std::size_t>(row.index());
    alg::NearestSteps column(picture.width, width);
    for (int x = 0; x < width; ++x, column.advance()) {
      const uint8_t pixel[alg::kPackedBytes] = {src[0], src[1], src[2]};
      write(pixel, dst, rowOffset + static_cast<std::size_t>(column.index()) * kPictureBytes);
      src += alg::kPackedBytes;
      dst += alg::kPackedBytes;
    }
  }
}

uint8_t addLimited(int a, int b) { return static_cast<uint8_t>(a + b < 255 ? a + b : 255); }

/// (alpha x front + (255 - alpha) x value) / 256: an opaque front loses up to one level.
uint8_t layOver(int alpha, int front, int value) {
  return static_cast<uint8_t>((alpha * front + (255 - alpha) * value) >> 8);
}

}  // namespace

void Colorpaint(unsigned char* src, unsigned char* dst, int width, int height) {
  if (!alg::decodePngFile(kColorpaintPath, alg::bitmap_effect)) {
    return;
  }
  const uint8_t* picture = alg::bitmap_effect.pixels.get();
  blendStretched(src, dst, width, height, alg::bitmap_effect,
                 [picture](const uint8_t* bgr, uint8_t* out, std::size_t offset) {
                   const uint8_t* paint = picture + offset;
                   out[0] = addLimited(bgr[2], paint[0]);
                   out[1] = addLimited(bgr[1], paint[1]);
                   out[2] = addLimited(bgr[0], paint[2]);
                 });
}

void areaeffect(unsigned char* src, unsigned char* dst, int width, int height) {
  // Both are decoded whatever becomes of the first: the bitmaps outlive the call.
  const bool hasFront = alg::decodePngFile(kFrontPath, alg::bitmap_front);
  const bool hasEffect = alg::decodePngFile(kEffectPath, alg::bitmap_effect);
  if (!hasFront || !hasEffect || alg::bitmap_effect.width < alg::bitmap_front.width ||
      alg::bitmap_effect.height < alg::bitmap_front.height) {
    return;
  }
  // The offset in the front picture counts in both, in a wider effect picture, too: there it lies
  // in another column or row, but always inside.
  const uint8_t* front = alg::bitmap_front.pixels.get();
  const uint8_t* effect = alg::bitmap_effect.pixels.get();
  blendStretched(src, dst, width, height, alg::bitmap_front,
                 [front, effect](const uint8_t* bgr, uint8_t* out, std::size_t offset) {
                   const uint8_t* over = front + offset;
                   const int inverting = effect[offset + 3] != 0 ? 255 : 0;  // 255 - v = 255 ^ v
                   out[0] = layOver(over[3], over[0], bgr[2] ^ inverting);
                   out[1] = layOver(over[3], over[1], bgr[1] ^ inverting);
                   out[2] = layOver(over[3], over[2], bgr[0] ^ inverting);
                 });
}
