// The effect type table and its pictures.
#include "device_root.h"
#include "libalgorithm/effect_pipeline.h"
#include "log_capture.h"
#include "platform/bitmap.h"

namespace {

/// Looks an effect up and checks everything about it; `picture` is what it shows.
void check(const ref::Effect& effect, int id, int width, int height, const ref::Picture& picture) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height);
  takeLog();
  const EffectTypeInfo info = effectTypeInit(effect.name.c_str(), width, height);
  EXPECT_EQ(info.effectId, id);
  EXPECT_EQ(info.stripCount, effect.strips);
  EXPECT_EQ(info.effectFlag, effect.name == "miniature" && width > height ? -1 : 0);
  EXPECT_EQ(std::pair(info.overlayWidth, info.overlayHeight),
            std::pair(picture.width, picture.height));
  EXPECT_TRUE(info.overlay == nullptr ? picture.rgba.empty()
                                      : same({info.overlay, picture.rgba.size()}, picture.rgba));
  std::string lines = "2 KAVRO_Effect_Function:  brennix process  effect " + effect.name + " \n";
  if (effect.id == 0 && id == 1000) {
    lines += "2 KAVRO_Effect_Function: brennix  cannot get the  1000 effect picture     \n";
  }
  EXPECT_EQ(takeLog(), lines);
}

TEST(EffectTable, EveryNameHasItsRowWithItsPictureOrIsUnknownWithoutIt) {
  const DeviceRoot root;
  const ref::Picture none{0, 0, {}};
  for (const ref::Effect& effect : ref::kEffects) {
    for (const auto& [width, height] : {std::pair{1920, 1080}, {1080, 1920}, {720, 720}}) {
      const std::string name = width > height ? effect.landscapePicture : effect.picture;
      alg::bitmap_effect = {};
      check(effect, name.empty() ? effect.id : 1000, width, height, none);
      if (name.empty()) continue;
      writeFile(root.path(name), {1, 2, 3});
      check(effect, 1000, width, height, none);
      check(effect, effect.id, width, height, root.writePicture(name, 5, 7));
      std::filesystem::remove(root.path(name));
    }
  }
}

TEST(EffectTable, AFailedDecodeLeavesThePreviousPictureAndNewSketchShowsIt) {
  const DeviceRoot root;
  const ref::Picture picture = root.writePicture("sucai3.png", 6, 5);
  check(ref::kEffects[27], 27, 8, 8, picture);
  const std::string path = root.path("sucai3.png");
  for (auto size = std::filesystem::file_size(path) - 12; size-- > 0;) {  // without the end marker
    std::filesystem::resize_file(path, size);
    EXPECT_EQ(effectTypeInit("PrettyJapan", 8, 8).effectId, 1000) << size;
    check(ref::kEffects[14], 1000, 8, 8, picture);
  }
}

TEST(Pictures, EveryKindOfPngBecomesPremultipliedRgba) {
  const DeviceRoot root;
  const struct {
    int colourType, bitDepth;
    Bytes rows, expected;  // two pixels, one above the other
  } cases[] = {
      {PNG_COLOR_TYPE_RGBA, 8, {255, 100, 3, 128, 1, 8, 9, 127}, {128, 50, 2, 128, 0, 4, 4, 127}},
      {PNG_COLOR_TYPE_RGB, 8, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 255, 4, 5, 6, 255}},
      {PNG_COLOR_TYPE_GRAY, 8, {7, 200}, {7, 7, 7, 255, 200, 200, 200, 255}},
      {PNG_COLOR_TYPE_GRAY_ALPHA, 8, {200, 51, 9, 255}, {40, 40, 40, 51, 9, 9, 9, 255}},
      {PNG_COLOR_TYPE_GRAY, 1, {0x80, 0}, {255, 255, 255, 255, 0, 0, 0, 255}},
      {PNG_COLOR_TYPE_PALETTE, 8, {1, 0}, {10, 20, 30, 255, 78, 39, 20, 100}},
      {PNG_COLOR_TYPE_GRAY, 16, {9, 9, 128, 128}, {9, 9, 9, 255, 128, 128, 128, 255}}};
  for (const auto& c : cases) {
    root.writePng("x.png", 1, 2, c.colourType, c.bitDepth, c.rows);
    alg::Bitmap bitmap;
    ASSERT_TRUE(alg::decodePngFile("/data/data/com.android.camera/effect/x.png", bitmap));
    EXPECT_EQ(std::pair(bitmap.width, bitmap.height), std::pair(1, 2));
    EXPECT_TRUE(same({bitmap.pixels.get(), 8}, c.expected)) << c.colourType << " " << c.bitDepth;
  }
}

}  // namespace
