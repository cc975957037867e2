// The four blurs against their definitions, one pixel and one sample at a time.
#include "blur_reference.h"
#include "effect_check.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"

namespace {

PackedEffect::Run separable(int channels, const ref::Ramp& ramp = {}) {
  return [=](uint8_t* src, uint8_t* dst, int width, int height) {
    ref::blurSeparable(channels, ramp, src, dst, width, height);
  };
}

/// miniature_r from row `offset` of an image that has `extra` more rows below the strip.
PackedEffect strip(int offset, int extra) {
  const auto run = [=](uint8_t* src, uint8_t* dst, int width, int height) {
    miniature_r(src, dst, width, height, offset, offset + height + extra);
  };
  return {"miniature_r", run, separable(3, {true, offset, extra})};
}

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }

/// Every target, between guard pages, against one run of the slow definition.
void check(const PackedEffect& effect, int channels, const Bytes& pixels, int width, int height) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height);
  Bytes source = pixels, expected(pixels.size());
  effect.reference(source.data(), expected.data(), width, height);
  onEachTarget([&] {
    const Guarded src(pixels), dst(noise(width * height * channels, 7));
    effect.run(src.data(), dst.data(), width, height);
    EXPECT_TRUE(same(dst.bytes(), expected));
    EXPECT_TRUE(same(src.bytes(), pixels)) << "the source changed";
    if (effect.inPlace) {
      effect.run(src.data(), src.data(), width, height);
      EXPECT_TRUE(same(src.bytes(), expected)) << "in place";
    }
  });
}

TEST(Blur, MatchesItsDefinition) {
  const auto runBlur = [](auto* src, auto* dst, int w, int h) { blur(dst, words(src), w, h); };
  const auto runActive = [](auto* src, auto* dst, int w, int h) {
    ActiveBlur(words(dst), words(src), uintptr_t{0} - 1, w, h);
  };
  const std::pair<int, PackedEffect> effects[] = {{3, {"miniature", miniature, separable(3)}},
                                                  {3, strip(0, 0)},
                                                  {3, strip(5, 40)},
                                                  {4, {"blur", runBlur, separable(4), true}},
                                                  {4, {"ActiveBlur", runActive, ref::blurSquare}}};
  for (const auto& [channels, effect] : effects) {
    for (int width = 1; width <= 70; ++width) {
      const int step = width <= 8 ? 1 : 11;  // the definition is slow: every width, every height
      for (int height = 1 + width % step; height <= 70; height += step) {
        check(effect, channels, noise(width * height * channels, width), width, height);
      }
    }
    for (const auto& [width, height] : {std::pair{300, 20}, {20, 300}, {700, 9}, {48, 120}}) {
      check(effect, channels, noise(width * height * channels), width, height);
      check(effect, channels, Bytes(zu(width * height * channels), 255), width, height);
    }
    for (const auto& [width, height] : kSizesBelowOne) effect.run(nullptr, nullptr, width, height);
  }
}

TEST(Blur, TakesAnyStripOfAnyRamp) {
  for (int n = 1; n <= 200; ++n) {
    for (const auto& [offset, extra] : {std::pair{0, 0}, {0, n / 3}, {n / 3, n / 3}, {n - 1, 0}}) {
      const int height = n - offset - extra;
      check(strip(offset, extra), 3, noise(5 * height * 3), 5, height);
    }
  }
  for (const int n : {-50, -1, 0, 1, 2, 3, 40, 89}) {  // too short for the rows: stays inside
    for (const int offset : {-200, -3, 0, 1, 50, 1000}) {
      check(strip(offset, n - offset - 90), 3, noise(11 * 90 * 3), 11, 90);
    }
  }
}

}  // namespace
