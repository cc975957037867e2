// The effects that blend pictures of the device into the image.
#include <array>
#include <fstream>

#include "device_root.h"
#include "effect_check.h"
#include "libalgorithm/classic_effects.h"
#include "log_capture.h"
#include "platform/bitmap.h"

namespace {

/// Noise with alpha 0, 255 and between: the file as it is, the result premultiplied.
ref::Picture writeNoise(const DeviceRoot& root, const std::string& name, int width, int height) {
  Bytes rgba = noise(width * height * 4, width + int(name.size()));
  for (std::size_t i = 3; i < rgba.size(); i += 12) rgba[i] = i % 8 == 3 ? 0 : 255;
  root.writePng(name, width, height, PNG_COLOR_TYPE_RGBA, 8, rgba);
  for (std::size_t i = 0; i < rgba.size(); ++i) {
    if (i % 4 != 3) rgba[i] = uint8_t((rgba[i] * rgba[i | 3] + 127) / 255);
  }
  return {width, height, rgba};
}

/// Calls write(rgb, dst, offset of the stretched picture's pixel).
template <class Write>
PackedEffect::Run stretched(const ref::Picture& picture, Write write) {
  return [w = picture.width, h = picture.height, write](const uint8_t* src, uint8_t* dst, int width,
                                                        int height) {
    for (int i = 0; i < width * height; ++i) {
      const int row = i / width * h / height, column = i % width * w / width;
      const int rgb[] = {src[3 * i + 2], src[3 * i + 1], src[3 * i]};
      write(rgb, dst + 3 * i, zu((row * w + column) * 4));
    }
  };
}

PackedEffect::Run refPaint(const ref::Picture& paint) {
  return stretched(paint, [paint](const int* rgb, uint8_t* out, std::size_t at) {
    for (int k = 0; k < 3; ++k) out[k] = uint8_t(std::min(rgb[k] + paint.rgba[at + zu(k)], 255));
  });
}

PackedEffect::Run refArea(const ref::Picture& front, const ref::Picture& effect) {
  return stretched(front, [front, effect](const int* rgb, uint8_t* out, std::size_t at) {
    for (int k = 0; k < 3; ++k) {
      const int a = front.rgba[at + 3], v = effect.rgba[at + 3] != 0 ? 255 - rgb[k] : rgb[k];
      out[k] = uint8_t((a * front.rgba[at + zu(k)] + (255 - a) * v) >> 8);
    }
  });
}

void unchanged(const uint8_t* /*src*/, uint8_t* /*dst*/, int /*width*/, int /*height*/) {}

void check(const PackedEffect::Run& run, const PackedEffect::Run& reference) {
  const PackedEffect effect{"picture effect", run, reference, true};
  takeLog();
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {1, 40}, {37, 1}, {33, 61}}) {
    checkOn(effect, noise(width * height * 3, width), width, height);
  }
  for (const int shift : {0, 1, -1, 3, -3, 50, -300}) checkOverlapping(effect, 31, 17, shift);
  for (const auto& [width, height] : kSizesBelowOne) run(nullptr, nullptr, width, height);
  EXPECT_EQ(takeLog(), "");
}

TEST(PictureEffects, ColorpaintAddsItsPicture) {
  const DeviceRoot root;
  check(Colorpaint, unchanged);
  for (const auto& [width, height] : {std::pair{1, 1}, {16, 16}, {300, 150}, {45, 26}}) {
    const auto paint = refPaint(writeNoise(root, "colorpaint.png", width, height));
    onEachTarget([&] { check(Colorpaint, paint); });
  }
  checkEverySize({"Colorpaint", Colorpaint, refPaint(writeNoise(root, "colorpaint.png", 29, 43))});
  std::ofstream(root.path("colorpaint.png")) << "no picture";
  check(Colorpaint, unchanged);
}

TEST(PictureEffects, AreaEffectLaysTheFrontOverAndInverts) {
  const std::array<int, 4> kSizes[] = {// front, effect; the last three are too small
                                       {20, 12, 20, 12}, {20, 12, 20, 30}, {20, 12, 27, 12},
                                       {1, 1, 1, 1},     {90, 70, 91, 71}, {20, 12, 19, 12},
                                       {20, 12, 20, 11}, {20, 12, 11, 40}};
  for (const auto& [width, height, effectWidth, effectHeight] : kSizes) {
    SCOPED_TRACE(testing::Message() << effectWidth << "x" << effectHeight);
    const DeviceRoot root;
    const auto front = writeNoise(root, "front.png", width, height);
    const auto effect = writeNoise(root, "effect.png", effectWidth, effectHeight);
    const bool fits = effectWidth >= width && effectHeight >= height;
    if (!fits) check(areaeffect, unchanged);
    if (fits) onEachTarget([&] { check(areaeffect, refArea(front, effect)); });
    if (effectHeight == 30) checkEverySize({"areaeffect", areaeffect, refArea(front, effect)});
  }
}

TEST(PictureEffects, AreaEffectNeedsAndDecodesBoth) {
  for (const std::string there : {"front.png", "effect.png"}) {
    const DeviceRoot root;
    writeNoise(root, there, 20, 12);
    alg::bitmap_front = {}, alg::bitmap_effect = {};
    areaeffect(nullptr, nullptr, 0, 0);  // pictures are decoded for any size
    EXPECT_EQ(alg::bitmap_front.width, there == "front.png" ? 20 : 0);
    EXPECT_EQ(alg::bitmap_effect.width, there == "effect.png" ? 20 : 0);
    check(areaeffect, unchanged);
  }
}

}  // namespace
