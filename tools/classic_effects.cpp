#include "tools/classic_effects.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <vector>

#include "base/image_size.h"
#include "effect/effect_table.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"
#include "platform/bitmap.h"
#include "threadpool/global_pool.h"
#include "tools/console.h"
#include "tools/device_root.h"

namespace alg::tool {
namespace {

using Parameters = ClassicParameters;

constexpr ClassicOption kRadius{"--radius", ""};
constexpr ClassicOption kOffset{"--offset", ""};
constexpr ClassicOption kRamp{"--ramp", ""};
constexpr ClassicOption kPaper{"--paper", "red2green.png"};
constexpr ClassicOption kPicture{"--picture", "colorpaint.png"};
constexpr ClassicOption kFront{"--front", "front.png"};
constexpr ClassicOption kMask{"--mask", "effect.png"};

/// Has the routine turn packed B, G, R values into R, G, B ones. Its destination starts as a
/// crossed copy of the source, for routines that keep or copy what it held.
template <typename Value = unsigned char, typename Routine>
void onPackedPixels(Photo& photo, const Routine& routine) {
  const std::size_t values = pixelCount(photo.width, photo.height) * kPackedBytes;
  std::vector<Value> src(values);
  std::vector<Value> dst(values);
  const uint8_t* pixel = photo.pixels.get();
  for (std::size_t i = 0; i < values; i += kPackedBytes, pixel += kArgbBytes) {
    src[i] = dst[i + 2] = pixel[0];
    src[i + 1] = dst[i + 1] = pixel[1];
    src[i + 2] = dst[i] = pixel[2];
  }
  routine(src.data(), dst.data(), photo.width, photo.height);
  uint8_t* result = photo.pixels.get();
  for (std::size_t i = 0; i < values; i += kPackedBytes, result += kArgbBytes) {
    result[0] = static_cast<uint8_t>(dst[i + 2]);
    result[1] = static_cast<uint8_t>(dst[i + 1]);
    result[2] = static_cast<uint8_t>(dst[i]);
  }
}

template <SimpleFilter* kFilter>
void simple(Photo& photo, const Parameters&) {
  onPackedPixels(photo, kFilter);
}

template <void (*kFilter)(unsigned char*, unsigned char*, int, int, float)>
void withUnusedFloat(Photo& photo, const Parameters&) {
  onPackedPixels(photo, [](auto* src, auto* dst, int w, int h) { kFilter(src, dst, w, h, 0); });
}

/// For the routines that decode into the library's own pictures: one at a time, as on the road.
template <SimpleFilter* kFilter>
void withOwnPictures(Photo& photo, const Parameters&) {
  onPackedPixels(photo, [](auto* src, auto* dst, int w, int h) {
    const std::lock_guard lock(poolMutex());
    kFilter(src, dst, w, h);
  });
}

void lomo(Photo& photo, const Parameters&) {
  onPackedPixels(photo, [](auto* src, auto* dst, int w, int h) {
    ::Lomo(src, dst, w, h, nullptr, 0, 0);  // it takes a picture, but looks at none
  });
}

void lomoFun(Photo& photo, const Parameters&) { onPackedPixels<int>(photo, ::LomoFun); }

void fishEye(Photo& photo, const Parameters&) {
  onPackedPixels(photo, [](auto* src, auto* dst, int w, int h) { ::Fisheye(src, dst, 0, w, h); });
}

void fillLight(Photo& photo, const Parameters& parameters) {
  onPackedPixels(photo, [&](auto* src, auto* dst, int w, int h) {
    ::FillLightFix(src, dst, parameters.radius, w, h);
  });
}

void miniatureRows(Photo& photo, const Parameters& parameters) {
  const int64_t needed = int64_t{parameters.offset} + photo.height;
  const int64_t ramp = parameters.ramp == 0 ? needed : parameters.ramp;
  if (needed > ramp) {
    throw UserError(fmt::format("--ramp {} does not hold the photo's {} rows from --offset {} on",
                                ramp, photo.height, parameters.offset));
  }
  onPackedPixels(photo, [&](auto* src, auto* dst, int w, int h) {
    ::miniature_r(src, dst, w, h, parameters.offset, static_cast<int>(ramp));
  });
}

void newSketch(Photo& photo, const Parameters&) {
  Bitmap paper;
  decodePngFile(picturePath(kPaper.picture).c_str(), paper);
  onPackedPixels(photo, [&](auto* src, auto* dst, int w, int h) {
    ::newsketch(src, dst, w, h, paper.pixels.get(), paper.width, paper.height);
  });
}

void emboss(Photo& photo, const Parameters&) {
  onPackedPixels(photo, [](auto* src, auto* dst, int w, int h) {
    constexpr unsigned char kLevel = 128;  // rows 0 and 1 have no relief of their own
    std::fill_n(dst, pixelCount(w, h) * kPackedBytes, kLevel);
    ::Emboss(src, dst, w, h);
  });
}

void boxBlur(Photo& photo, const Parameters&) {
  ::blur(photo.pixels.get(), wordsOf(photo), photo.width, photo.height);
  makeOpaque(photo);
}

void activeBlur(Photo& photo, const Parameters&) {
  const Photo source = copyOf(photo);
  ::ActiveBlur(wordsOf(photo), wordsOf(source), 0, photo.width, photo.height);
  makeOpaque(photo);
}

constexpr ClassicEffect kEffects[] = {
    {"cross-process", "cross-process", "Film in the wrong bath: strong contrast, flat blue.",
     simple<CrossProcess>},
    {"gray-scale", "gray-scale", "Black and white.", simple<GrayScale>},
    {"nature", "nature", "Deep colours, hard contrast.", simple<nature>},
    {"sepia", "sepia", "The brown of an old print.", simple<Sepia>},
    {"pink", "pink", "Bright, warm and rosy.", simple<Pink>},
    {"summer", "summer_effect", "Washed in yellow and green light.", simple<Summer>},
    {"ocean", "Ocean_effect", "Below the surface: blue keeps, red goes.", simple<Ocean>},
    {"negative", "negative-effect", "Every colour turned into its opposite.", simple<negative>},
    {"lomo", "LOMO_effect", "The tones of a cheap film camera.", lomo},
    {"lomo-fun", "", "Lomo with dark corners.", lomoFun},
    {"fish-eye", "fish-eye", "Bulging, as through a round lens.", fishEye},
    {"fill-light", "fill-light", "A soft lamp from the front.", fillLight, {kRadius}},
    {"miniature", "miniature", "Sharp in the middle column, blurred to both sides.",
     simple<miniature>},
    {"miniature-rows",
     "",
     "A toy world: sharp across the middle, blurred above and below.",
     miniatureRows,
     {kOffset, kRamp}},
    {"sketch", "sketch", "Pencil lines on white.", simple<Sketch>},
    {"new-sketch", "newsketch_effect", "Pencil lines in the tint of a paper.", newSketch, {kPaper}},
    {"mosaic", "mosaic_effect", "Warm and bright. It forms no blocks.", simple<Mosaic>},
    {"emboss", "emboss_effect", "A grey relief.", emboss},
    {"color-paint",
     "colorpaint_effect",
     "Washed over with the colours of a picture.",
     withOwnPictures<Colorpaint>,
     {kPicture}},
    {"area",
     "area_effect",
     "In the frame of a picture, inverted where a mask says so.",
     withOwnPictures<areaeffect>,
     {kFront, kMask}},
    {"prague", "", "Bright colours with edges in ink.", withUnusedFloat<Prague>},
    {"prague-carton", "", "Pale as a cartoon; highlights wrap.", withUnusedFloat<PragueCarton>},
    {"other-test", "", "Experimental: hard contrast, golden light.", simple<otherTest>},
    {"temperature", "temperature", "Warmer: more red, less blue.", simple<Temperature>},
    {"blur", "", "The same as miniature, by a routine for 32-bit pixels.", boxBlur},
    {"active-blur", "", "Blurred to both sides, half as far.", activeBlur},
};

}  // namespace

std::span<const ClassicEffect> classicEffects() { return kEffects; }

void checkPictures(const ClassicEffect& effect) {
  std::array<Bitmap, std::tuple_size_v<decltype(effect.options)>> pictures;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const std::string_view picture = effect.options[i].picture;
    if (!picture.empty() && !decodePngFile(picturePath(picture).c_str(), pictures[i])) {
      throw missingPicture(effect.name, picture);
    }
  }
  const auto& [front, mask] = pictures;
  if (mask.pixels && (mask.width != front.width || mask.height < front.height)) {
    throw PictureError(
        fmt::format("{}: its mask has {}x{} pixels, but must be as wide and at least as tall as "
                    "its front picture "
                    "of {}x{}",
                    effect.name, mask.width, mask.height, front.width, front.height));
  }
}

void applyClassic(const ClassicEffect& effect, const ClassicParameters& parameters, Photo& photo) {
  checkPictures(effect);
  effect.run(photo, parameters);
}

}  // namespace alg::tool
