// Effects of one pixel, of its place or of a box, beside OpenCV.
#include "bench/peers/opencv.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"

namespace alg::bench {
namespace {

constexpr std::size_t kBytes = 3 * kPixels;

using Effect = void(uint8_t* src, uint8_t* dst, int width, int height);
using Step = std::function<void(const cv::Mat& from, cv::Mat& to)>;

/// `step` and an exchange of bytes 0 and 2: one after the other over the whole image, or in bands
/// that stay in the cache.
std::vector<Peer> crossed(Scene& s, const std::string& name, const Step& step) {
  return {{name + " + cvtColor",
           [&s, step, between = cv::Mat()]() mutable {
             cv::Mat to = packedMat(s.theirs);
             step(packedMat(s.packed), between);
             exchange(between, to);
           }},
          {name + " + cvtColor, in bands", [&s, step, between = cv::Mat()]() mutable {
             cv::Mat to = packedMat(s.theirs);
             inBands(packedMat(s.packed), to,
                     [&](const cv::Mat& source, cv::Mat& target, cv::Range) {
                       step(source, between);
                       exchange(between, target);
                     });
           }}};
}

Duel effectDuel(Scene& s, const char* work, double required, double tolerance, Effect* ours,
                std::vector<Peer> peers) {
  return {work,
          required,
          2 * kBytes,
          kBytes,
          tolerance,
          [&s, ours] { ours(s.packed.data(), s.ours.data(), kWidth, kHeight); },
          std::move(peers)};
}

/// The curves of an effect as a table for LUT, found by running it.
cv::Mat curvesOf(Effect* effect) {
  Bytes grey;
  for (int i = 0; i < 256 * 3; ++i) grey.push_back(static_cast<uint8_t>(i / 3));
  cv::Mat result(1, 256, CV_8UC3);
  effect(grey.data(), result.data, 256, 1);
  cv::Mat uncrossed;
  exchange(result, uncrossed);
  return uncrossed;
}

void passThrough(uint8_t* src, uint8_t* dst, int width, int height) {
  const RgbStripDesc from{src, width, height, width, width, 3, 1000, 0, nullptr, 0, 0};
  RgbStripDesc to{dst, width, height, width, width, 3, 1000, 0, nullptr, 0, 0};
  EffectFunction(&from, nullptr, &to);
}

Duel sepia(Scene& s) {
  const cv::Matx33f weights(387, 1575, 805, 344, 1405, 715, 268, 1097, 557);
  return effectDuel(s, "Sepia", 1.3, 1, Sepia, {{"OpenCV transform", [&s, weights] {
                                                   cv::Mat to = packedMat(s.theirs);
                                                   cv::transform(packedMat(s.packed), to,
                                                                 weights * (1.0F / 2048));
                                                 }}});
}

Duel grey(Scene& s) {
  return effectDuel(s, "GrayScale", 1.3, 1, GrayScale,
                    {{"OpenCV cvtColor to grey and back", [&s, one = cv::Mat()]() mutable {
                        cv::Mat to = packedMat(s.theirs);
                        cv::cvtColor(packedMat(s.packed), one, cv::COLOR_BGR2GRAY);
                        cv::cvtColor(one, to, cv::COLOR_GRAY2BGR);
                      }}});
}

/// The peer's radius is our peak everywhere, and it leaves the channels in place.
Duel tiltShift(Scene& s, Bytes& swapped) {
  Duel duel = effectDuel(s, "miniature", 1.0, 2.5, miniature,
                         {{"OpenCV boxFilter 49 x 49", [&] {
                             cv::Mat to = packedMat(s.theirs);
                             cv::boxFilter(packedMat(swapped), to, CV_8U, {49, 49}, {-1, -1}, true,
                                           cv::BORDER_REPLICATE);
                           }}});
  duel.operations = per_pixel::kBox;
  return duel;
}

/// Where each pixel comes from, found by sending coordinates through the effect.
cv::Mat fisheyeMap() {
  Bytes low(kBytes), high(kBytes), from(kBytes);
  cv::Mat map(kHeight, kWidth, CV_16SC2);
  for (const bool high8 : {false, true}) {
    for (std::size_t i = 0; i < kPixels; ++i) {
      const auto x = static_cast<int>(i % kWidth), y = static_cast<int>(i / kWidth);
      from[3 * i + 2] = static_cast<uint8_t>(high8 ? x >> 8 : x);
      from[3 * i + 1] = static_cast<uint8_t>(high8 ? y >> 8 : y);
    }
    Fisheye(from.data(), high8 ? high.data() : low.data(), 0, kWidth, kHeight);
  }
  auto* at = map.ptr<int16_t>();
  for (std::size_t i = 0; i < kPixels; ++i) {
    for (std::size_t c = 0; c < 2; ++c) {
      at[2 * i + c] = static_cast<int16_t>(low[3 * i + c] + 256 * high[3 * i + c]);
    }
  }
  return map;
}

/// The peer has its map ready, and its source with the channels exchanged.
Duel fisheye(Scene& s, Bytes& swapped) {
  Duel duel = effectDuel(
      s, "Fisheye", 3.0, 0, [](auto* src, auto* dst, int w, int h) { Fisheye(src, dst, 0, w, h); },
      {{"OpenCV remap, ready map, nearest", [&s, &swapped, map = fisheyeMap()] {
          cv::Mat to = packedMat(s.theirs);
          cv::remap(packedMat(swapped), to, map, cv::noArray(), cv::INTER_NEAREST);
        }}});
  duel.operations = per_pixel::kFisheye;
  return duel;
}

constexpr float kLight = 0.8F;

void fillLight(uint8_t* src, uint8_t* dst, int width, int height) {
  FillLightFix(src, dst, kLight, width, height);
}

/// The peer has the light ready as a picture, and its source with the channels exchanged.
Duel fillLight(Scene& s, Bytes& swapped) {
  Bytes middle(kBytes, 100), light(kBytes);
  fillLight(middle.data(), light.data(), kWidth, kHeight);
  for (uint8_t& v : light) v = static_cast<uint8_t>(v - 100);
  return effectDuel(s, "FillLightFix", 1.0, 0, fillLight,
                    {{"OpenCV add of a ready picture", [&s, &swapped, light]() mutable {
                        cv::Mat to = packedMat(s.theirs);
                        cv::add(packedMat(swapped), packedMat(light), to);
                      }}});
}

}  // namespace

std::vector<Duel> effectDuels(Scene& s) {
  static Bytes swapped(kBytes);
  cv::Mat to = packedMat(swapped);
  exchange(packedMat(s.packed), to);
  const auto lut = [](const cv::Mat& table) {
    return [table](const cv::Mat& from, cv::Mat& out) { cv::LUT(from, table, out); };
  };
  const auto invert = [](const cv::Mat& from, cv::Mat& out) { cv::bitwise_not(from, out); };
  const auto add = [](const cv::Mat& from, cv::Mat& out) {
    cv::add(from, cv::Scalar(12, 50, 100), out);
  };
  return {
      effectDuel(s, "three curves (PrettySweet)", 4.0, 0, PrettySweet,
                 crossed(s, "OpenCV LUT", lut(curvesOf(PrettySweet)))),
      effectDuel(s, "exchange of a name that passes through", 1.0, 0, passThrough,
                 {{"OpenCV cvtColor",
                   [&s] {
                     cv::Mat out = packedMat(s.theirs);
                     exchange(packedMat(s.packed), out);
                   }}}),
      effectDuel(s, "negative", 1.0, 0, negative, crossed(s, "OpenCV bitwise_not", invert)),
      effectDuel(s, "Mosaic (adds, saturating)", 1.0, 0, Mosaic, crossed(s, "OpenCV add", add)),
      grey(s),
      sepia(s),
      tiltShift(s, swapped),
      fisheye(s, swapped),
      fillLight(s, swapped),
  };
}

}  // namespace alg::bench
