// The whole effect pipeline against the reference.
#include "effect/pipeline.h"
#include "device_root.h"
#include "fake_jni.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"

namespace {

using Pictures = std::map<std::string, ref::Picture>;

/// Runs the pipeline on guarded frames of noise, as fast as it can and in phases, and compares all.
void check(const ref::Effect& effect, const Pictures& pictures, int width, int height,
           int lumaPad = 0, int chromaPad = 0) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height << " " << lumaPad
                                  << " " << chromaPad);
  const char* const name = effect.name.c_str();
  const ref::Frame f{width, height, width + lumaPad, width + chromaPad};
  const int luma = f.yStride * (height - 1) + width, bytes = luma + ref::chromaBytes(f);
  const Guarded frame(noise(bytes)), other(noise(bytes));
  Bytes expected = frame.bytes();
  const auto picture = pictures.find(width > height ? effect.landscapePicture : effect.picture);
  ref::pipeline(effect, picture == pictures.end() ? nullptr : &picture->second, expected.data(),
                expected.data() + luma, f);
  if (lumaPad + chromaPad == 0) {
    FakeBuffer buffer{frame.data(), bytes};
    EFFECT(FakeJni().env(), nullptr, buffer, width, height, FakeJni::text(name));
  } else {
    KAVRO_PrettyEffect_Function(name, nullptr, frame.data(), frame.data() + luma, height, width,
                                f.yStride, f.uvStride);
  }
  const bool shows = picture != pictures.end() && picture->second.height >= effect.strips;
  const bool lacks = !effect.picture.empty() && !shows;
  EXPECT_EQ(
      alg::runEffect({.name = name},
                     {other.data(), other.data() + luma, width, height, f.yStride, f.uvStride},
                     alg::Passes::kThree),
      lacks ? alg::Outcome::kNoPicture : alg::Outcome::kDone);
  EXPECT_TRUE(same(frame.bytes(), expected));
  EXPECT_TRUE(same(other.bytes(), expected)) << "phases";
}

TEST(Pipeline, EveryNameWithAndWithoutItsPicture) {
  const DeviceRoot root;
  for (const auto& [pictureWidth, pictureHeight] :  // none; too few rows for four strips; enough
       {std::pair{0, 0}, {1, 3}, {5, 4}, {33, 22}, {9, 80}}) {
    const auto pictures =
        pictureWidth == 0 ? Pictures() : root.writePictures(pictureWidth, pictureHeight);
    for (const ref::Effect& effect : ref::kEffects) {
      for (const int height : {32, 34, 36, 38, 44, 46, 60, 66}) {
        for (const int width : {16, 38, 70}) check(effect, pictures, width, height);
        EXPECT_TRUE(gCLAHE_Rgb_Buffer_in == nullptr && gCLAHE_Rgb_Buffer_out == nullptr);
      }
    }
  }
}

TEST(Pipeline, SmallOddAndPaddedFramesAreClippedToTheFrame) {
  const DeviceRoot root;
  const Pictures pictures = root.writePictures(6, 9);
  for (const std::size_t id : {7u, 22u, 26u, 27u}) {  // one strip; four; four with a picture
    for (int height = 1; height <= 21; ++height) {
      for (const int width : {1, 2, 3, 8, 17, 40})
        check(ref::kEffects[id], pictures, width, height);
    }
    for (const auto& [width, height] : {std::pair{20, 32}, {20, 36}, {20, 38}, {4100, 36}}) {
      for (const auto& [lumaPad, chromaPad] : {std::pair{0, 0}, {12, 12}, {6, 0}, {0, 8}}) {
        check(ref::kEffects[id], pictures, width, height, lumaPad, chromaPad);
      }
    }
    check(ref::kEffects[id], pictures, 4100, 37);   // these wide ones have several bands in a strip
    check(ref::kEffects[id], pictures, 2050, 262);  // and this one several in each piece of it
    for (const auto& [width, height] : kSizesBelowOne) {
      KAVRO_PrettyEffect_Function("PrettyBlue", "", nullptr, nullptr, height, width, width, width);
    }
  }
}

}  // namespace
