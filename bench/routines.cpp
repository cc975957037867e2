#include "bench/routines.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "effect/pipeline.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {
namespace {

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }
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

/// A strip of a ramp so long that all its rows have the same radius.
template <int kRadius>
void evenBlur(uint8_t* in, uint8_t* out, int w, int h) {
  constexpr int kPeak = 24;
  const int half = 100 * kPeak * h;
  miniature_r(in, out, w, h, half / kPeak * (kPeak - kRadius), 2 * half);
}

auto pipeline(const char* effect, Passes passes = Passes::kFewest) {
  return [=](uint8_t* /*in*/, uint8_t* out, int w, int h) {
    if (passes == Passes::kFewest) {
      KAVRO_PrettyEffect_Function(effect, "", out, out + w * h, h, w, w, w);
    } else {
      runEffect({.name = effect}, {out, out + w * h, w, h, w, w}, passes);
    }
  };
}
const std::string kPipelineRun = "KAVRO_PrettyEffect_Function ";

// Bytes a pixel of frames, packed pixels and words.
constexpr double kF = 1.5, kP = 3, kW = 4;

/// What is no operation, or is measured in another way than at its presets.
const Routine kByHand[] = {
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
    {"replaceImageContent", Input::kWords, 2 * kW,
     [](auto* in, auto* out, int w, int h) {
       int all[] = {0, 0, w, h};
       CameraUtil::replaceImageContent(in, out, w, all);
     }},
    {"getBackground", Input::kWords, 4 * kW,
     [](auto* in, auto* out, int w, int h) {  // of a picture, the same a pixel on, and another
       std::free(CameraUtil::getBackground(in, in + kArgbBytes, out, (w * h - 1) * kArgbBytes));
     }},
    // Effect pipeline.
    {"EffectFunction, passing through", Input::kPacked, 2 * kP, strip<&EffectFunction>},
    {kPipelineRun + "PrettySweet", Input::kFrame, 2 * kF, pipeline("PrettySweet"), Look::kPipeline},
    {kPipelineRun + "PrettySweet in phases", Input::kFrame, 2 * kF,
     pipeline("PrettySweet", Passes::kThree), Look::kPipeline},
    {kPipelineRun + "PrettyJapan", Input::kFrame, 2 * kF, pipeline("PrettyJapan"), Look::kPipeline},
    {kPipelineRun + "sepia", Input::kFrame, 2 * kF, pipeline("sepia"), Look::kPipeline},
    // Variants.
    {"Resize to half", Input::kWords, kW + kW / 4,
     [](auto* in, auto* out, int w, int h) { Resize(words(out), w / 2, h / 2, words(in), w, h); }},
    {"Resize to double", Input::kWords, kW / 4 + kW,
     [](auto* in, auto* out, int w, int h) { Resize(words(out), w, h, words(in), w / 2, h / 2); }},
    {"miniature_r, radius 3", Input::kPacked, 2 * kP, evenBlur<3>},
    {"miniature_r, radius 23", Input::kPacked, 2 * kP, evenBlur<23>},
    {"FillLightFix", Input::kPacked, 2 * kP,  // at its preset the light is even
     [](auto* in, auto* out, int w, int h) { FillLightFix(in, out, 0.8f, w, h); }},
    // With the decoding of their files.
    {"Colorpaint", Input::kPacked, 2 * kP, Colorpaint},
    {"areaeffect", Input::kPacked, 2 * kP, areaeffect},
};

/// Whether there are rows by hand for a routine, under its name or one that says more.
bool isByHand(std::string_view routine) {
  return std::ranges::any_of(kByHand, [&](const Routine& row) {
    const std::string_view name = row.name;
    return name.starts_with(routine) &&
           (name.size() == routine.size() || name[routine.size()] == ' ' ||
            name[routine.size()] == ',');
  });
}

/// The operation at its presets, under a picture of a portrait's size.
void operate(const Operation& operation, uint8_t* in, uint8_t* out, int w, int h) {
  constexpr int kPictureWidth = 720, kPictureHeight = 960;
  static const Bytes kPicture = picture(kPictureWidth, kPictureHeight, 4);
  Call call = presetCall(operation);
  call.src = in, call.dst = out, call.width = w, call.height = h;
  setResultSize(operation, call);
  for (std::size_t i = 0; i < operation.pictures.size(); ++i) {
    call.pictures[i] = operation.pictures[i].size == PictureRole::Size::kSameAsImage
                           ? PictureView{in, w, h}
                           : PictureView{kPicture.data(), kPictureWidth, kPictureHeight};
  }
  operation.run(call);
}

Input inputOf(Pixels pixels) {
  switch (pixels) {
    case Pixels::kWords:
      return Input::kWords;
    case Pixels::kInts:
      return Input::kInts;
    case Pixels::kFrame:
      return Input::kFrame;
    default:
      return Input::kPacked;
  }
}

/// Each image is read or written once; blends read the destination and pictures as large, too.
double bytesMovedBy(const Operation& operation) {
  const auto isLarge = [](const PictureRole& role) {
    return role.size == PictureRole::Size::kSameAsImage;
  };
  const auto images = 2 + std::ranges::count_if(operation.pictures, isLarge) +
                      (operation.family == Family::kBlend && operation.readsDestination ? 1 : 0);
  return static_cast<double>(images) * static_cast<double>(bytesOf(operation.pixels, 2)) / 2;
}

std::vector<Routine> allRoutines() {
  std::vector<Routine> rows(std::begin(kByHand), std::end(kByHand));
  for (const Operation* operation : operations()) {
    const std::string_view routine = operation->routine;
    const char* name = operation->routine;  // without the class
    if (const auto colon = routine.rfind(':'); colon != std::string_view::npos) name += colon + 1;
    if (isByHand(name)) continue;
    const bool curvesOrBoxes =
        operation == &operation::kPrettySweet || operation == &operation::kMiniature;
    rows.push_back({name, inputOf(operation->pixels), bytesMovedBy(*operation),
                    std::bind_front(operate, std::cref(*operation)),
                    curvesOrBoxes ? Look::kGrowth : Look::kPlain});
  }
  for (const Operation* operation : operations()) {
    const PipelineName& effect = operation->pipeline;
    if (!effect.runs || isByHand(kPipelineRun + effect.name)) continue;
    rows.push_back(
        {kPipelineRun + effect.name, Input::kFrame, 2 * kF, pipeline(effect.name), Look::kPreview});
  }
  return rows;
}

}  // namespace

std::span<const Routine> routines() {
  static const std::vector<Routine> kAll = allRoutines();
  return kAll;
}

}  // namespace alg::bench
