// The five simple Pretty filters, each as three curves: for red (source byte 0), green (byte 1) and
// blue (byte 2).
//
// All arithmetic is double precision unless it says float; a product added to something is one
// std::fma, and of two products that are added the second is rounded first.
#include <cmath>

#include "base/clamp.h"
#include "catalogue/operations.h"
#include "kernels/curve_map.h"
#include "kernels/curve_steps.h"
#include "libalgorithm/pretty_filters.h"

namespace {

using alg::makeCurves;
using alg::screen;
using alg::truncToByte;

/// Contrast of gain 1.25 around 127, clamped.
uint8_t contrast(int v) { return truncToByte(std::fma(v - 127, 1.25, 127.0)); }

/// u x 1.05 x rest + u x 255, of which three quarters are mixed with a quarter of the source value.
uint8_t sweetMix(int v, int u, int rest) {
  const int s = static_cast<int>(std::fma(u * 1.05, rest, u * 255));
  return truncToByte(std::fma(s >> 8, 0.75, v * 0.25));
}

uint8_t sweetRed(int v) {
  const int t = (v * 225) >> 8;
  return sweetMix(v, t + 30, 225 - t);
}
uint8_t sweetGreen(int v) { return sweetMix(v, v, 255 - v); }
uint8_t sweetBlue(int v) {
  const int t = (v * 250) >> 8;
  return sweetMix(v, t + 50, 205 - t);  // the bracket goes negative above 210: the top bends down
}

/// 1.2 v + 0.2 v (255 - v) / 255, the second term in float.
int natureGain(int v) {
  const float bend = (static_cast<float>(v) * 0.0007843137f) * static_cast<float>(v - 255);
  return truncToByte(std::fma(v, 1.2, -static_cast<double>(bend)));
}
uint8_t natureLift(int v) {
  const int n = natureGain(v);
  return truncToByte(std::fma(255 - n, 0.05, n));
}
uint8_t natureGreen(int v) {
  const int n = natureGain(v);
  return truncToByte(std::fma(n, 0.97, (255 - n) * 0.05));
}

uint8_t contrastScreen(int v) { return screen(contrast(v)); }

uint8_t blueRed(int v) { return truncToByte(contrastScreen(v) * 0.8); }
uint8_t blueBlue(int v) { return screen(truncToByte((v - 107) + 127.0)); }

/// The screen curve squeezed into 10 to 90 percent.
uint8_t moonlightRedGreen(int v) {
  const int s = 255 - contrastScreen(v);
  return truncToByte(std::fma(255 - s, 0.9, s * 0.1));
}

uint8_t whiteDewRed(int v) {
  return contrastScreen(v < 128 ? static_cast<int>(std::fma(v, 0.85, 20.0)) : v);
}
uint8_t whiteDewBlue(int v) {
  return contrastScreen(v < 128 ? static_cast<int>(std::fma(v, 0.765, 30.0)) : v);
}

}  // namespace

void PrettySweet(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(sweetRed, sweetGreen, sweetBlue);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void PrettyNature(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(natureLift, natureGreen, natureLift);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void PrettyBlue(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(blueRed, contrastScreen, blueBlue);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void PrettyMoonlight(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(moonlightRedGreen, moonlightRedGreen, screen);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void PrettyWhiteDew(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(whiteDewRed, contrastScreen, whiteDewBlue);
  alg::mapCurves(src, dst, width, height, kCurves);
}

namespace alg::operation {

constinit const Operation kPrettySweet{
    .name = "PrettySweet",
    .routine = "PrettySweet",
    .family = Family::kPretty,
    .shows = "Lifted shadows, milky middle tones.",
    .formula =
        "Each channel is lifted (red by 30, blue by 50), brightened to u + 1.05 u (255 - u) / 256, "
        "and mixed three to one with the source.",
    .pixels = Pixels::kPackedRgb,
    .pipeline = {.name = "PrettySweet", .identifier = 20, .runs = true},
    .run = runPlain<PrettySweet>,
};

constinit const Operation kPrettyNature{
    .name = "PrettyNature",
    .routine = "PrettyNature",
    .family = Family::kPretty,
    .shows = "Brighter, with clear whites and green held back.",
    .formula =
        "1.2 v plus a bend that is highest in the middle, then 5 % toward white; green times 0.97.",
    .pixels = Pixels::kPackedRgb,
    .pipeline = {.name = "PrettyNature", .identifier = 21, .runs = true},
    .run = runPlain<PrettyNature>,
};

constinit const Operation kPrettyBlue{
    .name = "PrettyBlue",
    .routine = "PrettyBlue",
    .family = Family::kPretty,
    .shows = "Cool: blue lifted, red to 80 %.",
    .formula = "Contrast of gain 1.25 and screen on red and green, blue plus 20 and screened.",
    .pixels = Pixels::kPackedRgb,
    .pipeline = {.name = "PrettyBlue", .identifier = 22, .runs = true},
    .run = runPlain<PrettyBlue>,
};

constinit const Operation kPrettyMoonlight{
    .name = "PrettyMoonlight",
    .routine = "PrettyMoonlight",
    .family = Family::kPretty,
    .shows = "Pale light with blue shadows.",
    .formula =
        "Contrast of gain 1.25 and screen on red and green, squeezed into 10 to 90 %; blue is "
        "screened over the full range.",
    .pixels = Pixels::kPackedRgb,
    .pipeline = {.name = "PrettyMoonlight", .identifier = 23, .runs = true},
    .run = runPlain<PrettyMoonlight>,
};

constinit const Operation kPrettyWhiteDew{
    .name = "PrettyWhiteDew",
    .routine = "PrettyWhiteDew",
    .family = Family::kPretty,
    .shows = "Bright and fresh.",
    .formula =
        "Shadows lifted on red and blue, then contrast of gain 1.25 and screen on all three.",
    .pixels = Pixels::kPackedRgb,
    .pipeline = {.name = "PrettyWhiteDew", .identifier = 24, .runs = true},
    .run = runPlain<PrettyWhiteDew>,
};

}  // namespace alg::operation
