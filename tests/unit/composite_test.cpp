// Blends with weights, overlaps and rectangles that the catalogue does not allow, resize over long
// distances, and the maximum functions.
#include <array>

#include "blend_reference.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/pretty_filters.h"
#include "operation_check.h"
#include "resize_reference.h"

namespace {

TEST(Composite, MixesWithAnyWeights) {
  constexpr std::pair<int, unsigned> kWeights[] = {
      {256, 256}, {-3, 259}, {0x12345678, 0xFFFEDCBA}};  // sums that wrap, weights beyond 16 bits
  const Bytes pixels = noise(1103), before = noise(1103, 2);
  onEachTarget([&] {
    for (const auto& [w, v] : kWeights) {
      const Guarded dst(before);
      CameraUtil::add2Image(pixels.data(), w, dst.data(), v, 1103);
      Bytes expected = before;
      for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = uint8_t((expected[i] * v + pixels[i] * uint32_t(w)) >> 8);
      }
      EXPECT_TRUE(same(dst.bytes(), expected)) << w << " " << v;
    }
  });
}

TEST(Composite, ThreeImagesAgainstTheirBackground) {
  onEachTarget([] {
    constexpr int kStarts[][3] = {{0, 4000, 8000}, {0, 0, 4000},  {4000, 0, 0}, {0, 1, 5},
                                  {1, 0, 4000},    {40, 4000, 3}, {9, 0, 2},    {5, 5, 5}};
    for (const auto& [a, b, c] : kStarts) {
      for (const int n : {-5, 0, 1, 31, 100, 3990, 3991}) {
        Bytes all = noise(12000, n);
        for (uint8_t& byte : all) byte = uint8_t(n % 2 == 0 ? byte % 6 : byte);  // many ties
        const Guarded got(all);
        uint8_t *at = got.data(), *from = all.data();
        const Bytes expected = ref::background(from + a, from + b, from + c, n);
        uint8_t* const background = CameraUtil::getBackground(at + a, at + b, at + c, n);
        EXPECT_TRUE(same({background, expected.size()}, expected)) << a << " " << b << " " << n;
        std::free(background);
        ref::farthest(from + a, from + b, from + c, n);
        CameraUtil::add3ImageByBackground(at + a, at + b, at + c, n);
        ASSERT_TRUE(same(got.bytes(), all)) << a << " " << b << " " << c << " " << n;
      }
    }
  });
}

TEST(Composite, RectanglesAreCopiedColumnByColumn) {
  constexpr int kWrap = 1 << 30;  // a row of so many pixels is 2^32 bytes: no step at all
  struct Case {
    int width, rect[4];
  } cases[] = {{20, {3, 1, 17, 9}},  {20, {2, 1, 2, 5}},     {20, {5, 4, 9, 4}},
               {20, {9, 4, 5, 6}},   {20, {0, 0, 1, 1}},     {20, {-2, -3, 4, 2}},
               {20, {15, 2, 31, 5}}, {kWrap, {4, -2, 9, 3}}, {-2, {0, 0, 10, 3}}};
  for (auto& [width, rect] : cases) {
    for (const int shift : {2000, 0, 4, -4, 2, -3, 32, 80, -80, 200, 532, -532}) {
      const Guarded got(noise(6000));
      Bytes expected = got.bytes();
      ref::paste(&expected[2000], &expected[asSize(2000 + shift)], width, rect);
      CameraUtil::replaceImageContent(&got.data()[2000], &got.data()[2000 + shift], width, rect);
      ASSERT_TRUE(same(got.bytes(), expected)) << width << " " << rect[0] << " " << shift;
    }
  }
}

TEST(Resize, MixesFourNeighboursFarApartAndFeedsBack) {
  constexpr std::array<int, 4> kSizes[] = {
      // to, from: steps, positions and bounds leave 32 bits
      {2, 2, 70000, 1},
      {3, 2, 70000, 1},
      {2, 3, 1, 70000},
      {70000, 2, 40000, 1},
      {2, 66000, 32767, 1},
      {300, 7, 40000, 3},  // few columns far apart
      {50000, 2, 40000, 3},
      // twice as many and half as many columns and rows, together and alone
      {140002, 2, 70001, 1},
      {700, 600, 350, 300},
      {145, 31, 72, 19},
      {144, 30, 72, 19},
      {33, 38, 70, 19},
      {35, 20, 70, 40},
      {36, 31, 72, 19},
      {20000, 1, 40000, 2}};
  for (const auto& [dw, dh, sw, sh] : kSizes) {
    Trial trial(operationNamed("resize"), sw, sh);
    trial.call.resultWidth = dw, trial.call.resultHeight = dh;
    trial.src = noise(sw * sh * 4, sw + dh), trial.dst = Bytes(trial.resultBytes(), 1);
    check(trial);
  }
  const auto words = [](const Guarded& block) { return reinterpret_cast<uint32_t*>(block.data()); };
  onEachVectorTarget([&] {
    for (const int shift : {0, -20, 20, -700}) {  // results become sources
      const Guarded got(noise(4 * 3000)), expected(got.bytes());
      uint32_t *at = words(got) + 1000, *to = words(expected) + 1000;
      ref::resize(to + shift, 30, 31, to, 20, 33);
      Resize(at + shift, 30, 31, at, 20, 33);
      ASSERT_TRUE(same(got.bytes(), expected.bytes())) << shift;
    }
  });
  for (const auto& [w, h] : kSizesBelowOne) Resize(nullptr, w, h, nullptr, 4, 4);
}

TEST(Maximum, TakesTheSecondUnlessTheFirstIsGreater) {
  EXPECT_TRUE(maxf(2.5f, -3.0f) == 2.5f && maxf(-3.0f, 2.5f) == 2.5f);
  EXPECT_TRUE(maxf(NAN, 1.0f) == 1.0f && std::isnan(maxf(1.0f, NAN)) &&
              std::signbit(maxf(0, -0.f)));
  EXPECT_TRUE(max(-7, 3) == 3 && max(3, -7) == 3 && max(INT32_MIN, -1) == -1);
}

}  // namespace
