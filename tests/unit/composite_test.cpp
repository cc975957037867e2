// Blending of byte arrays, resize and the maximum functions.
#include <array>

#include "effect_check.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/pretty_filters.h"
#include "resize_reference.h"

namespace {

template <class Run, class Reference>
void checkPairs(Run run, Reference reference) {
  for (const int shift : {3000, 0, 1, -1, 7, 16, -17, 40}) {
    for (int n = 0; n <= 1100; n += n < 70 ? 1 : 103) {
      const Guarded got(noise(n + std::abs(shift), n));
      Bytes expected = got.bytes();
      const int src = std::max(-shift, 0), dst = std::max(shift, 0);
      for (int i = 0; i < n; ++i) {
        const uint32_t s = expected[zu(src + i)], d = expected[zu(dst + i)];
        expected[zu(dst + i)] = uint8_t(reference(s, d));
      }
      run(got.data() + src, got.data() + dst, unsigned(n));
      ASSERT_TRUE(same(got.bytes(), expected)) << shift << " " << n;
    }
  }
}

TEST(Composite, TwoImagesByteByByte) {
  onEachTarget([] {
    using Weights = std::pair<int, unsigned>;
    for (const auto& [w, v] :
         {Weights{128, 128}, {256, 256}, {-3, 259}, {0x12345678, 0xFFFEDCBA}}) {
      checkPairs([w = w, v = v](auto* src, auto* dst,
                                unsigned n) { CameraUtil::add2Image(src, w, dst, v, n); },
                 [w = w, v = v](uint32_t s, uint32_t d) { return (d * v + s * uint32_t(w)) >> 8; });
    }
    checkPairs(CameraUtil::add2ImageByBrightness, [](auto s, auto d) { return std::max(s, d); });
    checkPairs(CameraUtil::add2ImageByDarkness, [](auto s, auto d) { return std::min(s, d); });
  });
}

TEST(Composite, ThreeImagesAgainstTheirBackground) {
  onEachTarget([] {
    constexpr int kStarts[][3] = {{0, 4000, 8000}, {0, 0, 4000},  {4000, 0, 0}, {0, 1, 5},
                                  {1, 0, 4000},    {40, 4000, 3}, {9, 0, 2},    {5, 5, 5}};
    for (const auto& [a, b, c] : kStarts) {
      for (const int n : {-5, 0, 1, 31, 100, 3990, 3991}) {
        Bytes expected = noise(12000, n), background;
        for (uint8_t& byte : expected) byte = uint8_t(n % 2 == 0 ? byte % 6 : byte);  // many ties
        const Guarded got(expected);
        const auto distance = [&](int at, int from) { return std::abs(expected[zu(at)] - from); };
        for (int i = 0; i < n; ++i) {
          const int v = expected[zu(a + i)];
          const int from = distance(b + i, v) < distance(c + i, v) ? b : c;
          background.push_back(expected[zu(from + i)]);
        }
        uint8_t *at = got.data(), *bg = CameraUtil::getBackground(at + a, at + b, at + c, n);
        EXPECT_TRUE(same({bg, background.size()}, background)) << a << " " << b << " " << n;
        std::free(bg);
        for (int i = 0; i < n; ++i) {
          const int v = background[zu(i)];
          const int da = distance(a + i, v), db = distance(b + i, v), dc = distance(c + i, v);
          expected[zu(a + i)] = expected[zu((da < dc && db < dc ? c : da < db ? b : a) + i)];
        }
        CameraUtil::add3ImageByBackground(at + a, at + b, at + c, n);
        ASSERT_TRUE(same(got.bytes(), expected)) << a << " " << b << " " << c << " " << n;
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
      for (int x = rect[0]; x < rect[2]; ++x) {
        for (int y = rect[1]; y < rect[3]; ++y) {
          uint8_t pixel[4], *from = &expected[zu(2000 + 4 * (y * width + x))];
          std::memcpy(pixel, from, 4), std::memcpy(from + shift, pixel, 4);
        }
      }
      CameraUtil::replaceImageContent(&got.data()[2000], &got.data()[2000 + shift], width, rect);
      ASSERT_TRUE(same(got.bytes(), expected)) << width << " " << rect[0] << " " << shift;
    }
  }
}

TEST(Resize, MixesFourNeighbours) {
  std::vector<std::array<int, 4>> sizes = {
      // to, from: steps, positions and bounds leave 32 bits
      {2, 2, 70000, 1},     {3, 2, 70000, 1},     {2, 3, 1, 70000},
      {70000, 2, 40000, 1}, {2, 66000, 32767, 1}, {300, 7, 40000, 3},  // few columns far apart
      {50000, 2, 40000, 3}};
  const Bytes random = noise(4 * 1500);
  for (std::size_t i = 0; i < random.size(); i += 4) {
    sizes.push_back({random[i] % 70 + 1, random[i + 1] % 70 + 1, random[i + 2] % 70 + 1,
                     random[i + 3] % 70 + 1});
  }
  const auto words = [](const Guarded& block) { return reinterpret_cast<uint32_t*>(block.data()); };
  onEachTarget([&] {
    for (const auto& [dw, dh, sw, sh] : sizes) {
      for (const bool white : {false, true}) {
        const Bytes pixels = white ? Bytes(zu(sw * sh * 4), 255) : noise(sw * sh * 4, sw + dh);
        const Guarded src(pixels, white), dst(Bytes(zu(dw * dh * 4), 1), white);
        const Guarded expected(dst.bytes());
        ref::resize(words(expected), dw, dh, words(src), sw, sh);
        Resize(words(dst), dw, dh, words(src), sw, sh);
        ASSERT_TRUE(same(dst.bytes(), expected.bytes()))
            << sw << "x" << sh << " " << dw << "x" << dh;
        EXPECT_TRUE(!white || *words(dst) == 0xFDFDFD);
      }
    }
    for (const int shift : {0, -20, 20, -700}) {  // results become sources
      const Guarded got(noise(4 * 3000)), expected(got.bytes());
      uint32_t *at = words(got) + 1000, *to = words(expected) + 1000;
      ref::resize(to + shift, 30, 31, to, 20, 33);
      Resize(at + shift, 30, 31, at, 20, 33);
      ASSERT_TRUE(same(got.bytes(), expected.bytes())) << shift;
    }
  });
  for (const auto& [w, h] : kSizesBelowOne) {
    Resize(nullptr, w, h, nullptr, 4, 4), Resize(nullptr, 4, 4, nullptr, w, h);
  }
}

TEST(Maximum, TakesTheSecondUnlessTheFirstIsGreater) {
  EXPECT_TRUE(maxf(2.5f, -3.0f) == 2.5f && maxf(-3.0f, 2.5f) == 2.5f);
  EXPECT_TRUE(maxf(NAN, 1.0f) == 1.0f && std::isnan(maxf(1.0f, NAN)) &&
              std::signbit(maxf(0, -0.f)));
  EXPECT_TRUE(max(-7, 3) == 3 && max(3, -7) == 3 && max(INT32_MIN, -1) == -1);
}

}  // namespace
