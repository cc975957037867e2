#include "bench/routines.h"

#include <cstdlib>
#include <cstring>

#include "base/image_size.h"
#include "effect/pipeline.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {
namespace {

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }
int* ints(uint8_t* bytes) { return reinterpret_cast<int*>(bytes); }

template <auto kRoutine>
void whole(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, w, h);
}

template <auto kRoutine, class Pixels = uint32_t>
void decode(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(reinterpret_cast<Pixels*>(out), in, in + w * h, w, h, w, w);
}

template <auto kRoutine, class Pixels = uint32_t>
void encode(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(reinterpret_cast<Pixels*>(in), out, out + w * h, w, h, w, w);
}

void pull(uint8_t* in, uint8_t* out, int w, int h) {
  const auto fetch = [](void* pixels, int index, int* red, int* green, int* blue) {
    const uint8_t* pixel = static_cast<uint8_t*>(pixels) + std::ptrdiff_t{index} * kArgbBytes;
    *red = pixel[2], *green = pixel[1], *blue = pixel[0];
  };
  decodeARGB2YUV420P(in, fetch, out, out + w * h, w, h, w);
}

template <auto kCallback>
void strip(uint8_t* in, uint8_t* out, int w, int h) {
  constexpr int kPassThrough = 1000;
  const YuvStripDesc yuvIn{in, in + w * h, w, h, w, w};
  const RgbStripDesc rgbIn{in, w, h, w, w, 3, kPassThrough, 0, nullptr, 0, 0};
  YuvStripDesc yuvOut{out, out + w * h, w, h, w, w};
  RgbStripDesc rgbOut{out, w, h, w, w, 3, kPassThrough, 0, nullptr, 0, 0};
  kCallback(kCallback == &YUV2RGB ? static_cast<const void*>(&yuvIn) : &rgbIn, nullptr,
            kCallback == &RGB2YUV ? static_cast<void*>(&yuvOut) : &rgbOut);
}

/// By a quarter turn, which the frames' routines take with the sizes of the result.
template <auto kRoutine>
void turn(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, w, h, 270);
}
template <auto kRoutine>
void turnFrame(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, h, w);
}

template <auto kBlend, auto... kWeight>
void blend(uint8_t* in, uint8_t* out, int w, int h) {
  kBlend(in, out, static_cast<unsigned>(w * h * kArgbBytes));
}

/// Three pictures of `n` bytes: `in`, the same a pixel on, and `out`.
template <class Run>
void onThree(uint8_t* in, uint8_t* out, int w, int h, Run run) {
  run(in, in + kArgbBytes, out, (w * h - 1) * kArgbBytes);
}

constexpr int kOverlayWidth = 720, kOverlayHeight = 960;

template <auto kRoutine>
void overlay(uint8_t* in, uint8_t* out, int w, int h) {
  static Bytes overlay = picture(kOverlayWidth, kOverlayHeight, 4);
  kRoutine(in, out, w, h, overlay.data(), kOverlayWidth, kOverlayHeight);
}

template <auto kRoutine>
void radial(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, 0.8f, w, h);
}

template <auto kRoutine>
void drawing(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, w, h, 0);
}

/// A strip of a ramp so long that all its rows have the same radius.
template <int kRadius>
void evenBlur(uint8_t* in, uint8_t* out, int w, int h) {
  constexpr int kPeak = 24;
  const int half = 100 * kPeak * h;
  miniature_r(in, out, w, h, half / kPeak * (kPeak - kRadius), 2 * half);
}

template <char const* kName, Road kRoad = Road::kFastest>
void road(uint8_t* /*in*/, uint8_t* out, int w, int h) {
  if (kRoad == Road::kFastest) {
    KAVRO_PrettyEffect_Function(kName, "", out, out + w * h, h, w, w, w);
  } else {
    runEffect(kName, {out, out + w * h, w, h, w, w}, kRoad);
  }
}
constexpr char kSweet[] = "PrettySweet", kNature[] = "PrettyNature", kBlue[] = "PrettyBlue",
               kMoonlight[] = "PrettyMoonlight", kWhiteDew[] = "PrettyWhiteDew",
               kBeautiful[] = "PrettyBeautiful", kPink[] = "PrettyPink", kJapan[] = "PrettyJapan",
               kPasses[] = "sepia";

// Bytes a pixel of frames, packed pixels, words and ints.
constexpr double kF = 1.5, kP = 3, kW = 4, kI = 12;

constexpr Routine kRoutines[] = {
    {"memcpy", Input::kWords, 2 * kW,
     [](auto* in, auto* out, int w, int h) { std::memcpy(out, in, pixelCount(w, h) * 4); },
     Look::kAlone},
    // Converters.
    {"decodeYUV2ARGB_LUT", Input::kFrame, kF + kW, decode<decodeYUV2ARGB_LUT>, Look::kGrowth},
    {"decodeYVU2ARGB_OpenGL", Input::kFrame, kF + kW, decode<decodeYVU2ARGB_OpenGL>},
    {"decodeYUV2ARGB_jni", Input::kFrame, kF + kP, decode<decodeYUV2ARGB_jni, uint8_t>},
    {"decodeARGB2YUV_OpenGL", Input::kWords, kF + kW, encode<decodeARGB2YUV_OpenGL>},
    {"decodeARGB2YVU_OpenGL", Input::kWords, kF + kW, encode<decodeARGB2YVU_OpenGL>},
    {"decodeARGB2YUV_jni", Input::kPacked, kF + kP, encode<decodeARGB2YUV_jni, uint8_t>},
    {"decodeARGB2YUV420P", Input::kWords, kF + kW, pull, Look::kAlone},
    {"YUV2RGB", Input::kFrame, kF + kP, strip<&YUV2RGB>},
    {"RGB2YUV", Input::kPacked, kF + kP, strip<&RGB2YUV>},
    // CameraUtil.
    {"rotateYUV90", Input::kFrame, 2 * kF, turnFrame<CameraUtil::rotateYUV90>},
    {"rotateYUV180", Input::kFrame, 2 * kF, whole<CameraUtil::rotateYUV180>},
    {"rotateYUV270", Input::kFrame, 2 * kF, turnFrame<CameraUtil::rotateYUV270>},
    {"rotateYUV", Input::kFrame, 2 * kF, turn<CameraUtil::rotateYUV>},
    {"rotateARGB90", Input::kWords, 2 * kW, whole<CameraUtil::rotateARGB90>},
    {"rotateARGB180", Input::kWords, 2 * kW, whole<CameraUtil::rotateARGB180>},
    {"rotateARGB270", Input::kWords, 2 * kW, whole<CameraUtil::rotateARGB270>},
    {"rotateARGB", Input::kWords, 2 * kW, turn<CameraUtil::rotateARGB>},
    {"add2Image", Input::kWords, 3 * kW,
     [](auto* in, auto* out, int w, int h) {
       CameraUtil::add2Image(in, 64, out, 192, static_cast<unsigned>(w * h * kArgbBytes));
     }},
    {"add2ImageByBrightness", Input::kWords, 3 * kW, blend<CameraUtil::add2ImageByBrightness>},
    {"add2ImageByDarkness", Input::kWords, 3 * kW, blend<CameraUtil::add2ImageByDarkness>},
    {"replaceImageContent", Input::kWords, 2 * kW,
     [](auto* in, auto* out, int w, int h) {
       int all[] = {0, 0, w, h};
       CameraUtil::replaceImageContent(in, out, w, all);
     }},
    {"getBackground", Input::kWords, 4 * kW,
     [](auto* in, auto* out, int w, int h) {
       onThree(in, out, w, h, [](auto* a, auto* b, auto* c, int n) {
         std::free(CameraUtil::getBackground(a, b, c, n));
       });
     }},
    {"add3ImageByBackground", Input::kWords, 4 * kW,
     [](auto* in, auto* out, int w, int h) {
       onThree(in, out, w, h, [](auto* a, auto* b, auto* c, int n) {
         CameraUtil::add3ImageByBackground(c, a, b, n);
       });
     }},
    // Effect road.
    {"EffectFunction, passing through", Input::kPacked, 2 * kP, strip<&EffectFunction>},
    {"KAVRO_PrettyEffect_Function PrettySweet", Input::kFrame, 2 * kF, road<kSweet>, Look::kRoad},
    {"KAVRO_PrettyEffect_Function PrettySweet in phases", Input::kFrame, 2 * kF,
     road<kSweet, Road::kPhases>, Look::kRoad},
    {"KAVRO_PrettyEffect_Function PrettyNature", Input::kFrame, 2 * kF, road<kNature>,
     Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyBlue", Input::kFrame, 2 * kF, road<kBlue>, Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyMoonlight", Input::kFrame, 2 * kF, road<kMoonlight>,
     Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyWhiteDew", Input::kFrame, 2 * kF, road<kWhiteDew>,
     Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyBeautiful", Input::kFrame, 2 * kF, road<kBeautiful>,
     Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyPink", Input::kFrame, 2 * kF, road<kPink>, Look::kPreview},
    {"KAVRO_PrettyEffect_Function PrettyJapan", Input::kFrame, 2 * kF, road<kJapan>, Look::kRoad},
    {"KAVRO_PrettyEffect_Function sepia", Input::kFrame, 2 * kF, road<kPasses>, Look::kRoad},
    // Pretty filters, temperature, resize, blurs.
    {"PrettySweet", Input::kPacked, 2 * kP, PrettySweet, Look::kGrowth},
    {"PrettyNature", Input::kPacked, 2 * kP, PrettyNature},
    {"PrettyBlue", Input::kPacked, 2 * kP, PrettyBlue},
    {"PrettyMoonlight", Input::kPacked, 2 * kP, PrettyMoonlight},
    {"PrettyWhiteDew", Input::kPacked, 2 * kP, PrettyWhiteDew},
    {"PrettyBeautiful", Input::kPacked, 2 * kP, overlay<PrettyBeautiful>},
    {"PrettyPink", Input::kPacked, 2 * kP, overlay<PrettyPink>},
    {"PrettyJapan", Input::kPacked, 2 * kP, overlay<PrettyJapan>},
    {"Temperature", Input::kPacked, 2 * kP, Temperature},
    {"Resize to half", Input::kWords, kW + kW / 4,
     [](auto* in, auto* out, int w, int h) { Resize(words(out), w / 2, h / 2, words(in), w, h); }},
    {"Resize to double", Input::kWords, kW / 4 + kW,
     [](auto* in, auto* out, int w, int h) { Resize(words(out), w, h, words(in), w / 2, h / 2); }},
    {"ActiveBlur", Input::kWords, 2 * kW,
     [](auto* in, auto* out, int w, int h) { ActiveBlur(words(out), words(in), 0, w, h); }},
    {"blur", Input::kWords, 2 * kW,
     [](auto* in, auto* out, int w, int h) { blur(out, words(in), w, h); }},
    // Classic effects.
    {"CrossProcess", Input::kPacked, 2 * kP, CrossProcess},
    {"GrayScale", Input::kPacked, 2 * kP, GrayScale},
    {"Sepia", Input::kPacked, 2 * kP, Sepia},
    {"Pink", Input::kPacked, 2 * kP, Pink},
    {"Summer", Input::kPacked, 2 * kP, Summer},
    {"Ocean", Input::kPacked, 2 * kP, Ocean},
    {"negative", Input::kPacked, 2 * kP, negative},
    {"Mosaic", Input::kPacked, 2 * kP, Mosaic},
    {"otherTest", Input::kPacked, 2 * kP, otherTest},
    {"Lomo", Input::kPacked, 2 * kP, overlay<Lomo>},
    {"LomoFun", Input::kInts, 2 * kI,
     [](auto* in, auto* out, int w, int h) { LomoFun(ints(in), ints(out), w, h); }},
    {"Fisheye", Input::kPacked, 2 * kP, radial<Fisheye>},
    {"FillLightFix", Input::kPacked, 2 * kP, radial<FillLightFix>},
    {"miniature", Input::kPacked, 2 * kP, miniature, Look::kGrowth},
    {"miniature_r, radius 3", Input::kPacked, 2 * kP, evenBlur<3>},
    {"miniature_r, radius 23", Input::kPacked, 2 * kP, evenBlur<23>},
    {"Sketch", Input::kPacked, 2 * kP, Sketch},
    {"newsketch", Input::kPacked, 2 * kP, overlay<newsketch>},
    {"Prague", Input::kPacked, 2 * kP, drawing<Prague>},
    {"PragueCarton", Input::kPacked, 2 * kP, drawing<PragueCarton>},
    {"nature", Input::kPacked, 2 * kP, nature},
    {"Emboss", Input::kPacked, 2 * kP, Emboss},
    {"Colorpaint", Input::kPacked, 2 * kP, Colorpaint},
    {"areaeffect", Input::kPacked, 2 * kP, areaeffect},
};

}  // namespace

std::span<const Routine> routines() { return kRoutines; }

}  // namespace alg::bench
