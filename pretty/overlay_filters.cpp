// The three Pretty filters that take an overlay picture. The precision of each step is
// contract: values are brought to 0..1 as floats and then used in double; std::fma where a step is
// fused.
#include <cmath>

#include "catalogue/operations.h"
#include "kernels/curve_map.h"
#include "libalgorithm/pretty_filters.h"
#include "pretty/soft_light.h"

namespace {

constexpr float kKnee = 0.64705884f;  // 55 / 85: the slope of both outer thirds

/// v / 255 as a float, to be used in double.
double unit(int v) { return static_cast<float>(v / 255.0); }

/// A value of 0..1 as a byte, the last steps in float.
uint8_t unitToByte(double value) {
  return static_cast<uint8_t>(static_cast<float>(value) * 255.0f);
}

/// The brightest third squeezed into 170..225.
int squeezeHighlights(int v) {
  return v > 170 ? static_cast<int>(static_cast<float>(v - 170) * kKnee) + 170 : v;
}

// Any C library's exp and pow give these tables: errors of up to 64 units in the last place, tried
// over all entries, change none.

/// A steep saturating curve of b mixed with b itself; `weight` is the curve's share.
double saturatingMix(double b, double weight) {
  const double curve = 1.0 - std::exp(-5.0 * std::pow(b, 1.75));
  return std::fma(weight, curve, (1.0 - weight) * b);
}

uint8_t japanTone(int v) {
  const int m =
      v < 85 ? static_cast<int>(static_cast<float>(v) * kKnee) + 30 : squeezeHighlights(v);
  return unitToByte(saturatingMix(unit(m), 0.75));
}

uint8_t japanRed(int v) { return static_cast<uint8_t>((japanTone(v) - 20.0) * 1.085); }

uint8_t pinkFinish(int v) { return unitToByte(saturatingMix(unit(v), 0.5)); }

int beautifulKnee(int v) {
  return v < 85 ? static_cast<int>(std::fma(static_cast<float>(v), kKnee, 30.0f))
                : squeezeHighlights(v);
}

uint8_t beautifulRise(int v) {
  const double b = unit(v);
  return unitToByte(1.0 - std::exp(b * b * -5.0));
}

uint8_t beautifulRedGreen(int v) { return beautifulRise(beautifulKnee(v)); }
uint8_t beautifulBlue(int v) { return beautifulRise(((beautifulKnee(v) * 205) >> 8) + 20); }

}  // namespace

namespace alg {

const SoftLightEffect& japanEffect() {
  static const SoftLightEffect kEffect = {SoftLightEffect::Order::kCurvesThenBlend,
                                          makeCurves(japanRed, japanTone, japanTone)};
  return kEffect;
}

const SoftLightEffect& pinkEffect() {
  static const SoftLightEffect kEffect = {SoftLightEffect::Order::kPinkThenBlendThenCurves,
                                          makeCurves(pinkFinish, pinkFinish, pinkFinish)};
  return kEffect;
}

const Curves& beautifulCurves() {
  static const Curves kCurves = makeCurves(beautifulRedGreen, beautifulRedGreen, beautifulBlue);
  return kCurves;
}

}  // namespace alg

void PrettyJapan(unsigned char* src, unsigned char* dst, int width, int height,
                 unsigned char* overlay, int overlayWidth, int overlayHeight) {
  alg::blendSoftLight(src, dst, width, height, {overlay, overlayWidth, overlayHeight},
                      alg::japanEffect());
}

void PrettyPink(unsigned char* src, unsigned char* dst, int width, int height,
                unsigned char* overlay, int overlayWidth, int overlayHeight) {
  alg::blendSoftLight(src, dst, width, height, {overlay, overlayWidth, overlayHeight},
                      alg::pinkEffect());
}

void PrettyBeautiful(unsigned char* src, unsigned char* dst, int width, int height,
                     unsigned char* /*overlay*/, int /*overlayWidth*/, int /*overlayHeight*/) {
  alg::mapCurves(src, dst, width, height, alg::beautifulCurves());
}

namespace alg::operation {
namespace {

/// A strip's rows lie under their part of the overlay.
template <auto kEffect>
void runSoftLight(const Call& call) {
  const PictureView& overlay = call.pictures[0];
  SoftLightImage(kEffect(), {overlay.pixels, overlay.width, overlay.height}, call.width,
                 call.rowsOfImage())
      .mapRows(call.src, call.dst, call.firstRow, call.height);
}

template <auto kFilter>
void runOverlaid(const Call& call) {
  const PictureView& overlay = call.pictures[0];
  // The filters' type is contract; they only read the overlay.
  kFilter(call.src, call.dst, call.width, call.height, const_cast<uint8_t*>(overlay.pixels),
          overlay.width, overlay.height);
}

}  // namespace

constexpr PictureRole kPrettyBeautifulPictures[] = {{.name = "overlay",
                                                     .file = "sucai0.png",
                                                     .landscapeFile = "sucai0_r.png",
                                                     .read = false,
                                                     .help = "accepted, but never read"}};

constinit const Operation kPrettyBeautiful{
    .name = "PrettyBeautiful",
    .routine = "PrettyBeautiful",
    .family = Family::kPretty,
    .shows = "Skin tones lifted into light.",
    .formula =
        "The darkest and the brightest third are flattened, blue is scaled to 80 % and lifted by "
        "20, then 1 - exp(-5 b^2) with b = v / 255.",
    .pixels = Pixels::kPackedRgb,
    .pictures = kPrettyBeautifulPictures,
    .pipeline = {.name = "PrettyBeautiful", .identifier = 25, .runs = true, .loadsPicture = true},
    .run = runOverlaid<PrettyBeautiful>,
};

constexpr PictureRole kPrettyPinkPictures[] = {{.name = "overlay",
                                                .file = "sucai0.png",
                                                .landscapeFile = "sucai0_r.png",
                                                .help = "the soft light"}};

constinit const Operation kPrettyPink{
    .name = "PrettyPink",
    .routine = "PrettyPink",
    .family = Family::kPretty,
    .shows = "Pink light over everything.",
    .formula =
        "Colours are twisted toward pink, blended with the overlay picture as soft light, then "
        "mixed half and half with a steep saturating curve of them, 1 - exp(-5 b^1.75) with "
        "b = v / 255.",
    .pixels = Pixels::kPackedRgb,
    .reach = Reach::kPlace,
    .pictures = kPrettyPinkPictures,
    .pipeline = {.name = "PrettyPink", .identifier = 26, .runs = true, .loadsPicture = true},
    .run = runSoftLight<pinkEffect>,
    .softLight = pinkEffect,
};

constexpr PictureRole kPrettyJapanPictures[] = {
    {.name = "overlay", .file = "sucai3.png", .help = "the soft light"}};

constinit const Operation kPrettyJapan{
    .name = "PrettyJapan",
    .routine = "PrettyJapan",
    .family = Family::kPretty,
    .shows = "The soft, bright look of a magazine.",
    .formula =
        "The outer thirds flattened as in PrettyBeautiful, then mixed with three quarters of "
        "PrettyPink's saturating curve, red lowered by 20 and stretched, and soft light with the "
        "overlay picture.",
    .pixels = Pixels::kPackedRgb,
    .reach = Reach::kPlace,
    .pictures = kPrettyJapanPictures,
    .pipeline = {.name = "PrettyJapan", .identifier = 27, .runs = true, .loadsPicture = true},
    .run = runSoftLight<japanEffect>,
    .softLight = japanEffect,
};

}  // namespace alg::operation
