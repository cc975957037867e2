// The effects that blend pictures of the device into the image: their files.
#include <array>

#include "device_root.h"
#include "libalgorithm/classic_effects.h"
#include "log_capture.h"
#include "operation_check.h"
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

/// Runs the exported routine, which reads files, beside the operation under pictures with their
/// pixels; without pictures nothing may change.
template <auto kRoutine>
void check(const char* name, const std::vector<ref::Picture>& pictures) {
  takeLog();
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {1, 40}, {37, 1}, {33, 61}}) {
    Trial trial = trialOn(operationNamed(name), noise(width * height * 3, width), width, height);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
      trial.pictures[i] = pictures[i].rgba;
      trial.call.pictures[i] = {nullptr, pictures[i].width, pictures[i].height};
    }
    const auto exported = [](const alg::Call& call) {
      kRoutine(call.src, call.dst, call.width, call.height);
    };
    const Bytes expected =
        pictures.empty() ? resultOf<Bytes>(trial, [](const alg::Call&) {}) : expectedOf(trial);
    EXPECT_TRUE(same(resultOf<Guarded>(trial, exported), expected)) << width << "x" << height;
  }
  for (const auto& [width, height] : kSizesBelowOne) kRoutine(nullptr, nullptr, width, height);
  EXPECT_EQ(takeLog(), "");
}

TEST(PictureEffects, ColorpaintAddsItsPicture) {
  const DeviceRoot root;
  const auto checkPaint = check<Colorpaint>;
  checkPaint("color-paint", {});
  for (const auto& [width, height] : {std::pair{1, 1}, {16, 16}, {300, 150}, {45, 26}}) {
    checkPaint("color-paint", {writeNoise(root, "colorpaint.png", width, height)});
  }
  writeFile(root.path("colorpaint.png"), {1, 2, 3});
  checkPaint("color-paint", {});
}

TEST(PictureEffects, AreaEffectLaysTheFrontOverAndInverts) {
  const std::array<int, 4> kSizes[] = {// front, effect; the last three are too small
                                       {20, 12, 20, 12}, {20, 12, 20, 30}, {20, 12, 27, 12},
                                       {1, 1, 1, 1},     {90, 70, 91, 71}, {20, 12, 19, 12},
                                       {20, 12, 20, 11}, {20, 12, 11, 40}};
  const DeviceRoot root;
  for (const auto& [width, height, effectWidth, effectHeight] : kSizes) {
    SCOPED_TRACE(testing::Message() << effectWidth << "x" << effectHeight);
    std::vector<ref::Picture> pictures = {
        writeNoise(root, "front.png", width, height),
        writeNoise(root, "effect.png", effectWidth, effectHeight)};
    if (effectWidth < width || effectHeight < height) pictures.clear();
    check<areaeffect>("area", pictures);
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
    check<areaeffect>("area", {});
  }
}

}  // namespace
