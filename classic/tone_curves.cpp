// The classic effects whose output bytes each depend on one input byte: three curves each, for blue
// (source byte 0), green (byte 1) and red (byte 2).
#include <cmath>

#include "base/clamp.h"
#include "catalogue/operations.h"
#include "classic/lomo_curves.h"
#include "kernels/curve_map.h"
#include "kernels/curve_steps.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::clampToByte;
using alg::contrastBy;
using alg::makeCurves;
using alg::screen;
using alg::truncToByte;

uint8_t keep(int v) { return clampToByte(v); }
uint8_t invert(int v) { return clampToByte(255 - v); }

// CrossProcess: an S of two parabolas, and one of two cubics behind a contrast step.

uint8_t crossBlue(int v) { return clampToByte((v >> 1) + 64); }

uint8_t crossGreen(int v) {
  const int rest = 255 - v;
  return clampToByte(v <= 127 ? (v * v) >> 7 : 255 - ((rest * rest) >> 7));
}

uint8_t crossRed(int v) {
  const int c = contrastBy(1.5, v);
  const int rest = 255 - c;
  return clampToByte(c <= 127 ? (c * c * c) >> 14 : 255 - ((rest * rest * rest) >> 14));
}

uint8_t pinkBlue(int v) { return alg::lomoBlue(contrastBy(1.2, v)); }

uint8_t summerBlue(int /*v*/) { return 100; }
uint8_t summerGreen(int v) { return clampToByte((v >> 1) + 127); }

// Both start at 0 where the condition turns true, and end at 255.
uint8_t oceanGreen(int v) { return clampToByte(v >= 85 ? v + (v >> 1) - 127 : 0); }
uint8_t oceanRed(int v) { return clampToByte(v >= 170 ? v - (2 * (255 - v)) : 0); }

uint8_t mosaicBlue(int v) { return clampToByte(v + 12); }
uint8_t mosaicGreen(int v) { return clampToByte(v + 50); }
uint8_t mosaicRed(int v) { return clampToByte(v + 100); }

/// Contrast of gain 1.5 that maps `centre` to 127, then screened. Here the sum is truncated.
uint8_t testScreen(int v, int centre) {
  return screen(truncToByte(std::fma(v - centre, 1.5, 127.0)));
}
uint8_t testBlue(int v) { return truncToByte(testScreen(v, 127) * 0.8); }
uint8_t testGreen(int v) { return testScreen(v, 127); }
uint8_t testRed(int v) { return testScreen(v, 107); }

}  // namespace

void CrossProcess(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(crossBlue, crossGreen, crossRed);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void Pink(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(pinkBlue, alg::lomoRed, screen);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void Summer(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(summerBlue, summerGreen, keep);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void Ocean(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(keep, oceanGreen, oceanRed);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void negative(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(invert, invert, invert);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void Mosaic(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(mosaicBlue, mosaicGreen, mosaicRed);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void otherTest(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = makeCurves(testBlue, testGreen, testRed);
  alg::mapCurves(src, dst, width, height, kCurves);
}

void Lomo(unsigned char* src, unsigned char* dst, int width, int height,
          unsigned char* /*auxImage*/, int /*auxWidth*/, int /*auxHeight*/) {
  static const alg::Curves kCurves = makeCurves(alg::lomoBlue, alg::lomoGreen, alg::lomoRed);
  alg::mapCurves(src, dst, width, height, kCurves);
}

namespace alg::operation {

constinit const Operation kCrossProcess{
    .name = "cross-process",
    .routine = "CrossProcess",
    .family = Family::kTone,
    .shows = "Film in the wrong bath: strong contrast, flat blue.",
    .formula =
        "Green follows an S-curve of two parabolas, red one of two cubics after a contrast of gain "
        "1.5; blue is v / 2 + 64.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "cross-process", .identifier = 1},
    .run = runPlain<CrossProcess>,
};

constinit const Operation kPink{
    .name = "pink",
    .routine = "Pink",
    .family = Family::kTone,
    .shows = "Bright, warm and rosy.",
    .formula =
        "Red screened; green with contrast of gain 1.5, blue of gain 1.2, both screened; blue "
        "then mapped to 63 to 191.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "pink", .identifier = 9},
    .run = runPlain<Pink>,
};

constinit const Operation kSummer{
    .name = "summer",
    .routine = "Summer",
    .family = Family::kTone,
    .shows = "Washed in yellow and green light.",
    .formula = "Red stays, green is v / 2 + 127, blue is 100 everywhere.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "summer_effect", .identifier = 10},
    .run = runPlain<Summer>,
};

constinit const Operation kOcean{
    .name = "ocean",
    .routine = "Ocean",
    .family = Family::kTone,
    .shows = "Below the surface: blue stays, red fades.",
    .formula = "Green starts at 85, red at 170; both end at 255.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "Ocean_effect", .identifier = 11},
    .run = runPlain<Ocean>,
};

constinit const Operation kNegative{
    .name = "negative",
    .routine = "negative",
    .family = Family::kTone,
    .shows = "Every colour turned into its opposite.",
    .formula = "255 - v.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "negative-effect", .identifier = 12},
    .run = runPlain<negative>,
};

constinit const Operation kMosaic{
    .name = "mosaic",
    .routine = "Mosaic",
    .family = Family::kTone,
    .shows = "Warm and bright; despite its name, without blocks.",
    .formula = "Red + 100, green + 50, blue + 12.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "mosaic_effect", .identifier = 17},
    .run = runPlain<Mosaic>,
};

constinit const Operation kOtherTest{
    .name = "other-test",
    .routine = "otherTest",
    .family = Family::kTone,
    .shows = "Experimental: hard contrast, golden light.",
    .formula = "Contrast of gain 1.5 around 127 (red around 107), screened, blue to 80 %.",
    .pixels = Pixels::kPackedBgr,
    .run = runPlain<otherTest>,
};

constexpr PictureRole kLomoPictures[] = {{.name = "vignette",
                                          .file = "effect_lomo.png",
                                          .read = false,
                                          .help = "accepted, but never read"}};

constinit const Operation kLomo{
    .name = "lomo",
    .routine = "Lomo",
    .family = Family::kTone,
    .shows = "The tones of a cheap film camera.",
    .formula = "Contrast of gain 1.5 and screen on red, screen on green, blue mapped to 63 to 191.",
    .pixels = Pixels::kPackedBgr,
    .overlap = Overlap::kApart,
    .pictures = kLomoPictures,
    .pipeline = {.name = "LOMO_effect",
                 .identifier = 0,
                 .loadsPicture = true,
                 .onMissing = PipelineName::OnMissing::kLog},
    .run =
        [](const Call& call) { Lomo(call.src, call.dst, call.width, call.height, nullptr, 0, 0); },
};

}  // namespace alg::operation
