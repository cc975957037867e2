#include "references.h"

#include <map>
#include <string_view>

#include "blend_reference.h"
#include "blur_reference.h"
#include "corner_reference.h"
#include "drawing_reference.h"
#include "resize_reference.h"
#include "tone_reference.h"

namespace {

using alg::Call;

template <ref::Rule* kRule>
void eachPixel(const Call& call) {
  const uint8_t* src = call.src;
  uint8_t* dst = call.dst;
  for (int i = 0; i < call.width * call.height; ++i, src += 3) {
    for (const int value : kRule(src[2], src[1], src[0])) *dst++ = uint8_t(value);
  }
}

template <int kEffectId>
void filter(const Call& call) {
  const auto& [pixels, width, height] = call.pictures[0];
  ref::filter(kEffectId, call.src, call.dst, call.width, call.height, pixels, width, height);
}

template <auto kRoutine, class Element = uint8_t>
void plain(const Call& call) {
  kRoutine(reinterpret_cast<Element*>(call.src), reinterpret_cast<Element*>(call.dst), call.width,
           call.height);
}

/// On a paper, or none.
void sketch(const Call& call) {
  ref::sketch(call.src, call.dst, call.width, call.height, call.pictures[0]);
}

template <int kChannels>
void blur(const Call& call) {
  ref::blurSeparable(kChannels, {}, call.src, call.dst, call.width, call.height);
}

void miniatureRows(const Call& call) {
  const int offset = call.integer(0), ramp = call.integer(1);
  const int extra = ramp != 0 ? ramp - offset - call.height : 0;
  ref::blurSeparable(3, {true, offset, extra}, call.src, call.dst, call.width, call.height);
}

/// A pixel at a time: write(red, green and blue, result, offset of the first picture's pixel).
template <class Write>
void underPicture(const Call& call, Write write) {
  const auto& [pixels, w, h] = call.pictures[0];
  for (int i = 0; i < call.width * call.height; ++i) {
    const int row = i / call.width * h / call.height, column = i % call.width * w / call.width;
    const int rgb[] = {call.src[3 * i + 2], call.src[3 * i + 1], call.src[3 * i]};
    write(rgb, call.dst + 3 * i, (row * w + column) * 4);
  }
}

void colorPaint(const Call& call) {
  underPicture(call, [paint = call.pictures[0].pixels](const int* rgb, uint8_t* out, int at) {
    for (int k = 0; k < 3; ++k) out[k] = uint8_t(std::min(rgb[k] + paint[at + k], 255));
  });
}

void area(const Call& call) {
  const uint8_t *front = call.pictures[0].pixels, *mask = call.pictures[1].pixels;
  underPicture(call, [=](const int* rgb, uint8_t* out, int at) {
    for (int k = 0; k < 3; ++k) {
      const int a = front[at + 3], v = mask[at + 3] != 0 ? 255 - rgb[k] : rgb[k];
      out[k] = uint8_t((a * front[at + k] + (255 - a) * v) >> 8);
    }
  });
}

/// By so many degrees; 0: as the first parameter says. Frames turn the other way.
template <bool kFrame, int kDegrees>
void turn(const Call& call) {
  const int named = kDegrees != 0 ? kDegrees : call.integer(0);
  const int degrees = kFrame ? 360 - named : named;
  const int w = call.resultWidth, h = call.resultHeight, bytes = kFrame ? 1 : 4;
  ref::rotate(call.src, call.width * bytes, call.dst, w * bytes, w, h, bytes, degrees);
  if (!kFrame) return;
  ref::rotate(call.src + w * h, call.width, call.dst + w * h, w, w / 2, h / 2, 2, degrees);
}

template <class Blend>
void eachByte(const Call& call, Blend blend) {
  for (int i = 0; i < 4 * call.width * call.height; ++i) {
    call.dst[i] = uint8_t(blend(int{call.src[i]}, int{call.dst[i]}));
  }
}

void paste(const Call& call) {
  const int right = call.integer(2) != 0 ? call.integer(2) : call.width;
  const int bottom = call.integer(3) != 0 ? call.integer(3) : call.height;
  ref::paste(call.src, call.dst, call.width, {call.integer(0), call.integer(1), right, bottom});
}

void background(const Call& call) {
  std::ranges::copy(ref::background(call.src, call.pictures[0].pixels, call.pictures[1].pixels,
                                    4 * call.width * call.height),
                    call.dst);
}

void farthest(const Call& call) {
  ref::farthest(call.dst, call.src, call.pictures[0].pixels, 4 * call.width * call.height);
}

const std::map<std::string_view, RunCall> kReferences = {
    {"PrettySweet", filter<20>},
    {"PrettyNature", filter<21>},
    {"PrettyBlue", filter<22>},
    {"PrettyMoonlight", filter<23>},
    {"PrettyWhiteDew", filter<24>},
    {"PrettyBeautiful", filter<25>},
    {"PrettyPink", filter<26>},
    {"PrettyJapan", filter<27>},
    {"cross-process", eachPixel<ref::crossProcess>},
    {"gray-scale", eachPixel<ref::grayScale>},
    {"sepia", eachPixel<ref::sepia>},
    {"pink", eachPixel<ref::pink>},
    {"summer", eachPixel<ref::summer>},
    {"ocean", eachPixel<ref::ocean>},
    {"negative", eachPixel<ref::negative>},
    {"mosaic", eachPixel<ref::mosaic>},
    {"other-test", eachPixel<ref::otherTest>},
    {"temperature", eachPixel<ref::temperature>},
    {"lomo", eachPixel<ref::lomo>},
    {"lomo-fun", plain<ref::lomoFun, int>},
    {"fish-eye", plain<ref::fisheye>},
    {"fill-light",
     [](const Call& call) {
       ref::fillLight(call.src, call.dst, call.number(0), call.width, call.height);
     }},
    {"miniature", blur<3>},
    {"miniature-rows", miniatureRows},
    {"blur", blur<4>},
    {"active-blur", plain<ref::blurSquare>},
    {"sketch", sketch},
    {"new-sketch", sketch},
    {"prague", plain<ref::prague>},
    {"prague-carton", plain<ref::carton>},
    {"nature", plain<ref::natureEffect>},
    {"emboss", plain<ref::emboss>},
    {"color-paint", colorPaint},
    {"area", area},
    {"resize",
     [](const Call& call) {
       ref::resize(reinterpret_cast<uint32_t*>(call.dst), call.resultWidth, call.resultHeight,
                   reinterpret_cast<const uint32_t*>(call.src), call.width, call.height);
     }},
    {"rotate-yuv-90", turn<true, 90>},
    {"rotate-yuv-180", turn<true, 180>},
    {"rotate-yuv-270", turn<true, 270>},
    {"rotate-yuv", turn<true, 0>},
    {"rotate-argb-90", turn<false, 90>},
    {"rotate-argb-180", turn<false, 180>},
    {"rotate-argb-270", turn<false, 270>},
    {"rotate-argb", turn<false, 0>},
    {"mix",
     [](const Call& call) {
       const int weight = call.integer(0);
       eachByte(call, [=](int s, int d) { return (d * (256 - weight) + s * weight) >> 8; });
     }},
    {"lighten",
     [](const Call& call) { eachByte(call, [](int s, int d) { return std::max(s, d); }); }},
    {"darken",
     [](const Call& call) { eachByte(call, [](int s, int d) { return std::min(s, d); }); }},
    {"paste", paste},
    {"background", background},
    {"farthest", farthest},
};

}  // namespace

RunCall referenceOf(const alg::Operation& operation) {
  const auto found = kReferences.find(operation.name);
  return found != kReferences.end() ? found->second : nullptr;
}
