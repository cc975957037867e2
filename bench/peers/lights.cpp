// Light that depends on a pixel's place, beside compositions of OpenCV calls: a vignette, and
// soft light under pictures that are wider than the image.
#include "base/image_size.h"
#include "bench/peers/opencv.h"
#include "catalogue/operations.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"
#include "pretty/soft_light.h"

namespace alg::bench {
namespace {

// Vignette ---------------------------------------------------------------------------------------

constexpr std::size_t kInts = 3 * kPixels;

struct IntImages {
  std::vector<int> from, ours, theirs;
};

cv::Mat mat(std::vector<int>& ints) { return {kHeight, kWidth, CV_32SC3, ints.data()}; }

/// The curves of LomoFun and how bright it leaves each pixel, found by running it: the curves on a
/// row whose centre alone they are read from, the brightness on white.
cv::Mat lomoCurves() {
  cv::Mat curves(1, 256, CV_8UC3);
  for (int v = 0; v < 256; ++v) {
    int pixel[3] = {v, v, v};
    LomoFun(pixel, pixel, 1, 1);
    for (int c = 0; c < 3; ++c) curves.at<cv::Vec3b>(v)[2 - c] = static_cast<uint8_t>(pixel[c]);
  }
  return curves;
}

cv::Mat lomoBrightness() {
  std::vector<int> white(kInts, 255);
  LomoFun(white.data(), white.data(), kWidth, kHeight);
  cv::Mat brightness(kHeight, kWidth, CV_32FC3);
  for (std::size_t i = 0; i < kInts; ++i) {  // green's curve ends at 255
    const int level = white[i / 3 * 3 + 1];
    brightness.ptr<float>()[i] = level == 255 ? 1 : (static_cast<float>(level) + 0.5F) / 255;
  }
  return brightness;
}

/// The peer has its brightness ready as a picture.
Duel lomoFun(Scene& s) {
  static IntImages images{
      {s.packed.begin(), s.packed.end()}, std::vector<int>(kInts), std::vector<int>(kInts)};
  const auto run = [curves = lomoCurves(), brightness = lomoBrightness(), bytes = cv::Mat(),
                    mapped = cv::Mat(), crossed = cv::Mat()]() mutable {
    cv::Mat to = mat(images.theirs);
    inBands(mat(images.from), to, [&](const cv::Mat& from, cv::Mat& target, const cv::Range& rows) {
      from.convertTo(bytes, CV_8U);
      cv::LUT(bytes, curves, mapped);
      exchange(mapped, crossed);
      cv::multiply(crossed, brightness.rowRange(rows), target, 1, CV_32S);
    });
  };
  const auto nearness = [] {
    const auto bytes = [](const std::vector<int>& ints) { return Bytes(ints.begin(), ints.end()); };
    return difference(bytes(images.ours), bytes(images.theirs), kInts);
  };
  return {
      .work = "LomoFun (one int a channel)",
      .required = 2.0,
      .moved = 2 * sizeof(int) * kInts,
      .result = 0,
      .tolerance = 1,
      .ours = [] { LomoFun(images.from.data(), images.ours.data(), kWidth, kHeight); },
      .peers = {{"OpenCV convertTo + LUT + cvtColor + multiply by a ready picture, in bands", run}},
      .difference = nearness,
      .operations = per_pixel::kLomoFun};
}

// Soft light -------------------------------------------------------------------------------------

constexpr int kPreviewWidth = 640, kPreviewHeight = 480;
constexpr std::size_t kPreviewPixels = pixelsOf(kPreviewWidth, kPreviewHeight);

struct Wide {
  int width, height;
};

/// One table of bytes or of shorts for all channels, of a function of a byte.
template <class Entry, class Function>
cv::Mat tableOf(int type, Function function) {
  cv::Mat table(1, 256, type);
  for (int v = 0; v < 256; ++v) table.at<Entry>(v) = static_cast<Entry>(function(v));
  return table;
}

cv::Mat tableOf(const Curves& curves) {
  cv::Mat table(1, 256, CV_8UC3);
  for (int v = 0; v < 256; ++v) {
    for (int c = 0; c < 3; ++c) table.at<cv::Vec3b>(v)[c] = curves.curve[c][v];
  }
  return table;
}

/// Ours as calls: a table before the blend, the blend, and either a table and an exchange behind it
/// or the exchange alone.
struct SoftLightByCalls {
  cv::Mat before, after;
  cv::Mat overlay, resized, stretched, values, share, isLight, gain, light, change, blended, mapped;
  cv::Mat darkGains = tableOf<int16_t>(CV_16S, [](int v) { return v * (256 - v); });
  cv::Mat lightGains = tableOf<int16_t>(
      CV_16S, [](int v) { return 256 * static_cast<int>(std::sqrt(255.0 * v) - v); });

  SoftLightByCalls(const SoftLightEffect& effect, Bytes& picture, const Wide& wide)
      : overlay(wide.height, wide.width, CV_8UC4, picture.data()) {
    if (effect.order == SoftLightEffect::Order::kCurvesThenBlend) {
      before = tableOf(effect.curves);
    } else {
      before = cv::Mat(1, 256, CV_8UC3);
      for (int v = 0; v < 256; ++v) {
        const auto up = static_cast<uint8_t>(v + pinkShift(v));
        const auto down = static_cast<uint8_t>(v - pinkShift(v));
        before.at<cv::Vec3b>(v) = {up, down, down};
      }
      after = tableOf(effect.curves);
    }
  }

  void operator()(const cv::Mat& from, cv::Mat& to) {
    cv::resize(overlay, resized, from.size(), 0, 0, cv::INTER_NEAREST);
    inBands(from, to, [this](const cv::Mat& source, cv::Mat& target, const cv::Range& rows) {
      cv::cvtColor(resized.rowRange(rows), stretched, cv::COLOR_RGBA2RGB);
      cv::LUT(source, before, values);
      stretched.convertTo(share, CV_16S, 2, -255);
      cv::compare(stretched, 127, isLight, cv::CMP_GT);
      cv::LUT(values, darkGains, gain);
      cv::LUT(values, lightGains, light);
      light.copyTo(gain, isLight);
      cv::multiply(share, gain, change, 1.0 / 65536);
      cv::add(values, change, blended, cv::noArray(), CV_8U);
      if (!after.empty()) cv::LUT(blended, after, mapped);
      exchange(after.empty() ? blended : mapped, target);
    });
  }
};

Duel softLight(Scene& s, const Operation& operation, const Wide& wide) {
  static Bytes picture = bench::picture(1280, 960, 4);  // as wide as any
  const SoftLightEffect& effect = operation.softLight();
  const std::size_t read = 4 * pixelsOf(wide.width, std::min(wide.height, kPreviewHeight));
  const auto image = [](Bytes& bytes) {
    return cv::Mat(kPreviewHeight, kPreviewWidth, CV_8UC3, bytes.data());
  };
  return {.work = std::string("preview image with ") + operation.name + " under " +
                  std::to_string(wide.width) + " x " + std::to_string(wide.height),
          .required = 2.0,
          .moved = 6 * kPreviewPixels + read,
          .result = 3 * kPreviewPixels,
          .tolerance = 1,
          .ours =
              [&s, &effect, wide] {
                blendSoftLight(s.packed.data(), s.ours.data(), kPreviewWidth, kPreviewHeight,
                               {picture.data(), wide.width, wide.height}, effect);
              },
          .peers = {{"OpenCV resize + blend of 9 calls, in bands",
                     [&s, image, calls = SoftLightByCalls(effect, picture, wide)]() mutable {
                       cv::Mat to = image(s.theirs);
                       calls(image(s.packed), to);
                     }}},
          .runs = 20,
          .operations = per_pixel::kCurves + per_pixel::kSoftLight,
          .pixels = kPreviewPixels};
}

}  // namespace

std::vector<Duel> lightDuels(Scene& s) {
  return {
      lomoFun(s),
      softLight(s, operation::kPrettyPink, {720, 960}),
      softLight(s, operation::kPrettyPink, {1280, 960}),
      softLight(s, operation::kPrettyJapan, {1280, 960}),
  };
}

}  // namespace alg::bench
