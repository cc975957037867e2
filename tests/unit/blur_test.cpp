// The four blurs against their definitions, one pixel and one sample at a time.
#include "effect_check.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"

namespace {

int rampRadius(int peak, int i, int n) {
  const int c = n >> 1;
  if (c < 1) return 0;
  return std::min(peak * (i < c ? c - i : i - c) / c, peak);  // the peak outside the ramp
}

uint8_t mean(int sum, int n) { return uint8_t(sum * ref::trunc(65536.0 / n) >> 16); }
int side(int r) { return 2 * r + 1; }

/// A box across, rounded down, then one of the same radius down; peak 24. The ramp has n entries,
/// or as many as there are columns, and begins at `offset`.
PackedEffect::Run separable(int channels, bool alongRows, int offset, int extra) {
  return [=](uint8_t* src, uint8_t* dst, int width, int height) {
    const int n = alongRows ? offset + height + extra : width;
    Bytes across;
    for (int i = 0; i < width * height * channels; ++i) {
      const int k = i % channels, x = i / channels % width, y = i / channels / width;
      const int r = rampRadius(24, alongRows ? offset + y : x, n);
      int sum = 0;
      for (int xx = x - r; xx <= x + r; ++xx) {
        sum += src[(y * width + std::clamp(xx, 0, width - 1)) * channels + k];
      }
      across.push_back(mean(sum, side(r)));
    }
    for (int i = 0; i < width * height * channels; ++i) {
      const int k = i % channels, x = i / channels % width, y = i / channels / width;
      const int r = rampRadius(24, alongRows ? offset + y : x, n);
      int sum = 0;
      for (int yy = y - r; yy <= y + r; ++yy) {
        sum += across[zu((std::clamp(yy, 0, height - 1) * width + x) * channels + k)];
      }
      dst[channels == 3 ? i + 2 - 2 * k : i] = k == 3 ? uint8_t{0} : mean(sum, side(r));
    }
  };
}

void square(uint8_t* src, uint8_t* dst, int width, int height) {
  for (int i = 0; i < width * height * 4; ++i) {
    const int k = i % 4, x = i / 4 % width, y = i / 4 / width, r = rampRadius(12, x, width);
    int sum = 4 * src[i];
    for (int yy = y - r; yy <= y + r; ++yy) {
      const uint8_t* row = src + 4 * width * std::clamp(yy, 0, height - 1) + k;
      for (int xx = x - r; xx <= x + r; ++xx) sum += row[4 * std::clamp(xx, 0, width - 1)];
    }
    dst[i] = k == 3 ? uint8_t{0} : mean(sum, side(r) * side(r) + 4);
  }
}

/// miniature_r from row `offset` of an image that has `extra` more rows below the strip.
PackedEffect strip(int offset, int extra) {
  const auto run = [=](uint8_t* src, uint8_t* dst, int width, int height) {
    miniature_r(src, dst, width, height, offset, offset + height + extra);
  };
  return {"miniature_r", run, separable(3, true, offset, extra)};
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
  const std::pair<int, PackedEffect> effects[] = {
      {3, {"miniature", miniature, separable(3, false, 0, 0)}},
      {3, strip(0, 0)},
      {3, strip(5, 40)},
      {4, {"blur", runBlur, separable(4, false, 0, 0), true}},
      {4, {"ActiveBlur", runActive, square}}};
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
