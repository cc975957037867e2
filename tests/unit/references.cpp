#include "references.h"

#include <map>
#include <string_view>

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

template <auto kRoutine>
void plain(const Call& call) {
  kRoutine(call.src, call.dst, call.width, call.height);
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

/// By so many degrees; 0: as the first parameter says.
template <int kDegrees>
void turn(const Call& call) {
  const int degrees = kDegrees != 0 ? kDegrees : call.integer(0);
  const auto direction = degrees == 180  ? ref::Turn::kHalf
                         : degrees == 90 ? ref::Turn::kClockwise
                                         : ref::Turn::kCounterClockwise;
  ref::rotate(call.src, call.width * 4, call.dst, call.resultWidth * 4, call.resultWidth,
              call.resultHeight, 4, direction);
}

template <int kDegrees>
void turnFrame(const Call& call) {
  const int degrees = kDegrees != 0 ? kDegrees : call.integer(0);
  const auto direction = degrees == 180  ? ref::Turn::kHalf
                         : degrees == 90 ? ref::Turn::kCounterClockwise
                                         : ref::Turn::kClockwise;
  const int w = call.resultWidth, h = call.resultHeight, luma = w * h;
  ref::rotate(call.src, call.width, call.dst, w, w, h, 1, direction);
  ref::rotate(call.src + luma, call.width, call.dst + luma, w, w / 2, h / 2, 2, direction);
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
  for (int x = call.integer(0); x < right; ++x) {
    for (int y = call.integer(1); y < bottom; ++y) {
      uint8_t pixel[4];
      std::memcpy(pixel, call.src + (y * call.width + x) * 4, 4);
      std::memcpy(call.dst + (y * call.width + x) * 4, pixel, 4);
    }
  }
}

int nearer(int to, int b, int c) { return std::abs(b - to) < std::abs(c - to) ? b : c; }

void background(const Call& call) {
  const uint8_t *b = call.pictures[0].pixels, *c = call.pictures[1].pixels;
  for (int i = 0; i < 4 * call.width * call.height; ++i) {
    call.dst[i] = uint8_t(nearer(call.src[i], b[i], c[i]));
  }
}

void farthest(const Call& call) {
  uint8_t* a = call.dst;
  const uint8_t *b = call.src, *c = call.pictures[0].pixels;
  std::vector<int> between;  // of the images as they were
  for (int i = 0; i < 4 * call.width * call.height; ++i)
    between.push_back(nearer(a[i], b[i], c[i]));
  for (const int from : between) {
    const int da = std::abs(*a - from), db = std::abs(*b - from), dc = std::abs(*c - from);
    *a = da < dc && db < dc ? *c : da < db ? *b : *a;
    ++a, ++b, ++c;
  }
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
    {"lomo-fun",
     [](const Call& call) {
       ref::lomoFun(reinterpret_cast<int*>(call.src), reinterpret_cast<int*>(call.dst), call.width,
                    call.height);
     }},
    {"fish-eye", plain<ref::fisheye>},
    {"fill-light",
     [](const Call& call) {
       ref::fillLight(call.src, call.dst, call.number(0), call.width, call.height);
     }},
    {"miniature", blur<3>},
    {"miniature-rows", miniatureRows},
    {"blur", blur<4>},
    {"active-blur", plain<ref::blurSquare>},
    {"sketch", [](const Call& call) { ref::sketch(call.src, call.dst, call.width, call.height); }},
    {"new-sketch",
     [](const Call& call) {
       ref::sketch(call.src, call.dst, call.width, call.height, call.pictures[0]);
     }},
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
    {"rotate-yuv-90", turnFrame<90>},
    {"rotate-yuv-180", turnFrame<180>},
    {"rotate-yuv-270", turnFrame<270>},
    {"rotate-yuv", turnFrame<0>},
    {"rotate-argb-90", turn<90>},
    {"rotate-argb-180", turn<180>},
    {"rotate-argb-270", turn<270>},
    {"rotate-argb", turn<0>},
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
