// The classic effects that work on one pixel at a time, colour temperature and LomoFun, against
// references.
#include <array>
#include <climits>

#include "effect_check.h"
#include "kernels/curve_map.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"

namespace {

using ref::clamp255, ref::trunc, ref::dim, ref::screen;

/// Bytes 0, 1 and 2 of a destination pixel, from red, green and blue.
using Pixel = std::array<int, 3>;
using Rule = Pixel(int r, int g, int b);

int stretch(int v, double gain) { return clamp255(trunc((v - 128) * gain) + 128); }
int stretchTest(int v) { return clamp255(trunc(std::fma(v, 1.5, 127.0))); }
int lifted(int v) { return (dim(v) >> 2) + ((3 * (255 - dim(v))) >> 2); }

Pixel crossProcess(int r, int g, int b) {
  const int c = stretch(r, 1.5), up = 255 - c, h = 255 - g;
  return {c <= 127 ? c * c * c >> 14 : 255 - (up * up * up >> 14),
          g <= 127 ? g * g >> 7 : 255 - (h * h >> 7), b / 2 + 64};
}
Pixel lomo(int r, int g, int b) { return {screen(stretch(r, 1.5)), screen(g), lifted(b)}; }
Pixel pink(int r, int g, int b) {
  return {screen(r), screen(stretch(g, 1.5)), lifted(stretch(b, 1.2))};
}
Pixel summer(int r, int g, int) { return {r, g / 2 + 127, 100}; }
Pixel ocean(int r, int g, int b) {
  return {r >= 170 ? 3 * r - 510 : 0, g >= 85 ? g + g / 2 - 127 : 0, b};
}
Pixel inverse(int r, int g, int b) { return {255 - r, 255 - g, 255 - b}; }
Pixel mosaic(int r, int g, int b) {
  return {r < 156 ? r + 100 : 255, g < 206 ? g + 50 : 255, b < 244 ? b + 12 : 255};
}
Pixel test(int r, int g, int b) {
  return {screen(stretchTest(r - 107)), screen(stretchTest(g - 127)),
          trunc(screen(stretchTest(b - 127)) * 0.8)};
}
Pixel grey(int r, int g, int b) {
  const int y = (601 * g + 306 * r + 117 * b) >> 10;
  return {y, y, y};
}
Pixel sepia(int r, int g, int b) {
  const int r2 = (805 * r + 1575 * g + 387 * b) >> 11, g2 = (715 * r + 1405 * g + 344 * b) >> 11;
  return {std::min(r2, 255), std::min(g2, 255), (557 * r + 1097 * g + 268 * b) >> 11};
}

Pixel temperature(int r, int g, int b) {
  const auto shift = [](int p, int gain) { return ((255 - p) * p * gain) >> 15; };
  const int t[] = {r + shift(r, 116), g + shift(g, 29), b - shift(b, 116)};
  const int most = std::max({t[0], t[1], t[2]});
  const float scale = most > 255 ? 255.0f / float(most) : 1.0f;
  return {trunc(float(t[0]) * scale), trunc(float(t[1]) * scale), trunc(float(t[2]) * scale)};
}

PackedEffect effect(const char* name, PackedEffect::Run run, Rule* rule) {
  const auto reference = [rule](const uint8_t* src, uint8_t* dst, int width, int height) {
    for (int i = 0; i < width * height; ++i, src += 3, dst += 3) {
      const Pixel out = rule(src[2], src[1], src[0]);
      for (int k = 0; k < 3; ++k) dst[k] = uint8_t(out[zu(k)]);
    }
  };
  return {name, std::move(run), reference, true};
}

TEST(Tone, EverySizeAndOverlapGivesTheReferenceBytes) {
  const auto runLomo = [](auto... args) { Lomo(args..., nullptr, 0, 0); };
  onEachTarget([&] {
    checkEverySize(effect("CrossProcess", CrossProcess, crossProcess));
    checkEverySize(effect("Mosaic", Mosaic, mosaic));
    for (const PackedEffect& curved :
         {effect("Pink", Pink, pink), effect("Summer", Summer, summer),
          effect("Ocean", Ocean, ocean), effect("negative", negative, inverse),
          effect("otherTest", otherTest, test), effect("Lomo", runLomo, lomo)}) {
      checkOn(curved, noise(351 * 41 * 3), 351, 41);
    }
    checkEverySize(effect("GrayScale", GrayScale, grey));
    checkEverySize(effect("Sepia", Sepia, sepia));
    checkEverySize(effect("Temperature", Temperature, temperature));
  });
  checkEveryColour(effect("GrayScale", GrayScale, grey));
  checkEveryColour(effect("Sepia", Sepia, sepia));
}

/// A curve from four bytes of noise: any table, or steps on bytes, a third of them with one flaw.
Bytes anyCurve(const uint8_t* dice) {
  if (dice[0] % 4 == 0) return noise(256, dice[1]);
  Bytes curve;
  const int up = dice[1] % 3 == 0 ? 255 : dice[1], down = dice[2] % 3 == 0 ? 0 : dice[2];
  for (int v = 0; v < 256; ++v) {
    const int flipped = dice[0] % 2 == 0 ? v : 255 - v;
    curve.push_back(uint8_t(std::max(std::min(flipped + up, 255) - down, 0)));
  }
  if (dice[3] % 3 == 0) ++curve[dice[3]];
  return curve;
}

TEST(Curves, OfEveryKindMapAsTheirTables) {
  onEachTarget([] {
    for (int seed = 0; seed < 2000; ++seed) {
      const Bytes dice = noise(12, seed);
      const Bytes c0 = anyCurve(&dice[0]), c1 = anyCurve(&dice[4]), c2 = anyCurve(&dice[8]);
      const auto curves =
          alg::makeCurves([&](int v) { return c0[zu(v)]; }, [&](int v) { return c1[zu(v)]; },
                          [&](int v) { return c2[zu(v)]; });
      Bytes pixels, expected;
      for (int v = 0; v < 256; ++v) {
        const uint8_t v0 = uint8_t(v), v1 = uint8_t(v * 3 + seed), v2 = uint8_t(255 - v);
        pixels.insert(pixels.end(), {v0, v1, v2});
        expected.insert(expected.end(), {c2[v2], c1[v1], c0[v0]});
      }
      alg::mapCurves(pixels.data(), pixels.data(), 256, curves);
      EXPECT_TRUE(same(pixels, expected)) << "curves " << seed;
    }
  });
}

void lomoFun(const int* src, int* dst, int width, int height) {
  const bool wide = width > height;
  const int hh = height >> 1, hw = width >> 1, r2 = hh * hh + hw * hw;
  const int scale = wide ? (height << 15) / width : (width << 15) / height;
  const int inner = trunc(r2 * 0.19999999999999996);
  for (int i = 0; i < width * height; ++i, src += 3) {
    const int ry = hh - i / width, rx = hw - i % width;
    const int dx = wide ? (scale * rx) >> 15 : rx, dy = wide ? ry : (scale * ry) >> 15;
    const int d2 = dx * dx + dy * dy;
    for (int value : lomo(clamp255(src[2]), clamp255(src[1]), clamp255(src[0]))) {
      if (d2 > inner) {
        const float k = float(1.0 / (r2 - inner)), t = float(r2 - d2) * k, u = t * t, u2 = u * u;
        value = trunc(float(value) * float(0.5 * u + 0.5 * u2));
      }
      *dst++ = clamp255(value);
    }
  }
}

TEST(LomoFun, GivesTheReferenceIntsInEverySizeAndInPlace) {
  const auto check = [](int width, int height) {
    const Guarded source(noise(width * height * 12, width)), target(noise(width * height * 12));
    Bytes expected = target.bytes();
    int *const src = reinterpret_cast<int*>(source.data()), wild[] = {INT_MIN, INT_MAX, -1, 256};
    for (int i = 0; i < width * height * 3; ++i) {  // three of seven are out of range
      src[i] = src[i] % 7 < 0 ? wild[i % 4] : src[i] & 255;
    }
    lomoFun(src, reinterpret_cast<int*>(expected.data()), width, height);
    for (const Guarded* to : {&target, &source}) {
      LomoFun(src, reinterpret_cast<int*>(to->data()), width, height);
      EXPECT_TRUE(same(to->bytes(), expected)) << width << "x" << height;
    }
  };
  for (int i = 0; i < 70 * 70; ++i) check(1 + i % 70, 1 + i / 70);
  // The last two wrap the squared half diagonal to below 0: brighter than the curves.
  for (const auto& [width, height] : {std::pair{1201, 800}, {799, 1300}, {100000, 5}, {4, 100001}})
    check(width, height);
  for (const auto& [width, height] : kSizesBelowOne) LomoFun(nullptr, nullptr, width, height);
}

}  // namespace
