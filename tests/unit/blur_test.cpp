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

TEST(Blur, MatchesItsDefinition) {
  const auto runBlur = [](auto* src, auto* dst, int w, int h) { blur(dst, words(src), w, h); };
  const auto runActive = [](auto* src, auto* dst, int w, int h) {
    ActiveBlur(words(dst), words(src), uintptr_t{0} - 1, w, h);
  };
  const PackedEffect effects[] = {{"blur", runBlur, separable(4), false, 4},
                                  {"ActiveBlur", runActive, ref::blurSquare, false, 4},
                                  {"miniature", miniature, separable(3)},
                                  strip(0, 0),
                                  strip(5, 40)};
  const auto checkAll = [](const PackedEffect& effect) {
    const int channels = effect.channels;
    for (int width = 1; width <= 70; ++width) {
      const int step = width <= 8 ? 1 : 11;  // the definition is slow: every width, every height
      for (int height = 1 + width % step; height <= 70; height += step) {
        checkOn(effect, noise(width * height * channels, width), width, height);
      }
    }
    for (const auto& [width, height] : {std::pair{300, 20}, {20, 300}, {700, 9}, {48, 120}}) {
      checkOn(effect, noise(width * height * channels), width, height);
      checkOn(effect, Bytes(zu(width * height * channels), 255), width, height);
    }
    for (const auto& [width, height] : kSizesBelowOne) effect.run(nullptr, nullptr, width, height);
  };
  onEachTarget([&] {
    for (const PackedEffect& effect : effects) checkAll(effect);
    for (int width = 1; width < 150; width += 7) checkOverlapping(effects[0], width, 60, 0);
  });
}

TEST(Blur, TakesAnyStripOfAnyRamp) {
  const auto checkStrip = [](int offset, int height, int extra, int width) {
    checkOn(strip(offset, extra), noise(width * height * 3), width, height);
  };
  onEachTarget([&] {
    for (int n = 1; n <= 200; ++n) {
      checkStrip(0, n, 0, 5), checkStrip(0, n - n / 3, n / 3, 5);
      checkStrip(n / 3, n - n / 3 * 2, n / 3, 5), checkStrip(n - 1, 1, 0, 5);
    }
    for (const int n : {-50, -1, 0, 1, 2, 3, 40, 89}) {  // too short for the rows: stays inside
      for (const int offset : {-200, -3, 0, 1, 50, 1000}) {
        checkStrip(offset, 90, n - offset - 90, 11);
      }
    }
  });
}

}  // namespace
