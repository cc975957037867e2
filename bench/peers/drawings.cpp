// Effects of neighbourhoods beside compositions of OpenCV calls.
#include <cmath>

#include "bench/peers/opencv.h"
#include "libalgorithm/classic_effects.h"

namespace alg::bench {
namespace {

constexpr std::size_t kBytes = 3 * kPixels;

template <class Ours, class Theirs>
Duel drawing(Scene& s, Bytes& from, const char* work, double required, double tolerance,
             double operations, Ours ours, const char* name, Theirs theirs) {
  return {.work = work,
          .required = required,
          .moved = 2 * kBytes,
          .result = kBytes,
          .tolerance = tolerance,
          .ours = [&s, &from, ours] { ours(from.data(), s.ours.data(), kWidth, kHeight); },
          .peers = {{name,
                     [&s, &from, theirs]() mutable {
                       cv::Mat to = packedMat(s.theirs);
                       theirs(packedMat(from), to);
                     }}},
          .operations = operations};
}

/// Grey of other weights than ours: the check takes a grey picture.
struct EmbossByFilter {
  cv::Mat one, relief;
  cv::Mat kernel = (cv::Mat_<float>(3, 3) << -16, 0, 0, 0, 0, 0, 0, 0, 16);

  void operator()(const cv::Mat& from, cv::Mat& to) {
    cv::cvtColor(from, one, cv::COLOR_BGR2GRAY);
    cv::filter2D(one, relief, CV_8U, kernel, {2, 2}, 128);
    cv::cvtColor(relief, to, cv::COLOR_GRAY2BGR);
  }
};

/// 255 minus the length of the gradient.
struct SketchByGradients {
  cv::Mat one, gx, gy, length, lines;
  cv::Mat step = (cv::Mat_<float>(1, 3) << -2, 0, 2);
  cv::Mat sum = cv::Mat::ones(1, 3, CV_32F);

  void operator()(const cv::Mat& from, cv::Mat& to) {
    cv::cvtColor(from, one, cv::COLOR_BGR2GRAY);
    cv::sepFilter2D(one, gx, CV_32F, step, sum);
    cv::sepFilter2D(one, gy, CV_32F, sum, step);
    cv::magnitude(gx, gy, length);
    length.convertTo(lines, CV_8U, -1, 255);
    cv::cvtColor(lines, to, cv::COLOR_GRAY2BGR);
  }
};

/// An edge map through a table (of 256 lengths), then the overlay: dark values are multiplied by
/// it, light ones screened, and a mask picks.
struct PragueByOverlay {
  cv::Mat gx, gy, length, edges, dark, light, inverseEdges, isDark;
  cv::Mat table = cv::Mat(1, 256, CV_8U);

  PragueByOverlay() {
    for (int i = 0; i < 256; ++i) {
      const double rise = 1 - std::exp(-5 * std::pow(i / 255.0, 1.5));
      table.at<uint8_t>(i) = static_cast<uint8_t>(255 - static_cast<int>(255 * rise));
    }
  }

  void operator()(const cv::Mat& from, cv::Mat& to) {
    cv::Sobel(from, gx, CV_32F, 1, 0);
    cv::Sobel(from, gy, CV_32F, 0, 1);
    cv::magnitude(gx, gy, length);
    length.convertTo(edges, CV_8U, 255.0 / 350);
    cv::LUT(edges, table, edges);
    cv::multiply(from, edges, dark, 1.0 / 128);
    cv::bitwise_not(edges, inverseEdges);
    cv::bitwise_not(from, light);
    cv::multiply(light, inverseEdges, light, 1.0 / 128);
    cv::bitwise_not(light, light);
    cv::threshold(from, isDark, 127, 255, cv::THRESH_BINARY_INV);
    dark.copyTo(light, isDark);
    cv::cvtColor(light, to, cv::COLOR_BGR2RGB);
  }
};

/// The neighbours' other channels don't count, so the check takes a grey picture; and values above
/// their neighbours' stay at 255, where ours wrap.
struct CartoonByDivision {
  cv::Mat brightest, quotient;
  cv::Mat diagonals = (cv::Mat_<uint8_t>(3, 3) << 1, 0, 1, 0, 0, 0, 1, 0, 1);

  void operator()(const cv::Mat& from, cv::Mat& to) {
    cv::dilate(from, brightest, diagonals);
    cv::divide(from, brightest, quotient, 255);
    cv::cvtColor(quotient, to, cv::COLOR_BGR2RGB);
  }
};

/// With the tints ready, stretched over the image.
struct SketchOnPaper {
  const cv::Mat tints;
  SketchByGradients sketch;
  cv::Mat lines;

  void operator()(const cv::Mat& from, cv::Mat& to) {
    sketch(from, lines);
    cv::add(lines, tints, to);
  }
};

constexpr int kPaperWidth = 960, kPaperHeight = 720;
Bytes paper = picture(kPaperWidth, kPaperHeight, 4);

void sketchOnPaper(uint8_t* src, uint8_t* dst, int width, int height) {
  newsketch(src, dst, width, height, paper.data(), kPaperWidth, kPaperHeight);
}

/// What our tints are: black lines, which are 0, show them alone.
cv::Mat tintsOfPaper() {
  cv::Mat resized, crossed;
  cv::resize(cv::Mat(kPaperHeight, kPaperWidth, CV_8UC4, paper.data()), resized, {kWidth, kHeight},
             0, 0, cv::INTER_NEAREST);
  cv::cvtColor(resized, crossed, cv::COLOR_RGBA2RGB);
  cv::Mat blue(kHeight, kWidth, CV_8U, cv::Scalar(0));
  cv::insertChannel(blue, crossed, 2);
  return crossed;
}

/// A pixel beside one of its own colour gets the saturation s + s^2 - s^3 and a harder contrast.
/// The others, which ours holds against their neighbours, come close.
struct NatureByHsv {
  cv::Mat hsv, deep, colours;
  cv::Mat table = cv::Mat(1, 256, CV_8UC3);

  NatureByHsv() {
    for (int i = 0; i < 256; ++i) {
      const double s = i / 255.0;
      const auto byte = static_cast<uint8_t>(i);
      const auto raised = static_cast<uint8_t>(std::lround(255 * (s + s * s - s * s * s)));
      table.at<cv::Vec3b>(i) = {byte, raised, byte};
    }
  }

  void operator()(const cv::Mat& from, cv::Mat& to) {
    inBands(from, to, [this](const cv::Mat& source, cv::Mat& target, const cv::Range&) {
      cv::cvtColor(source, hsv, cv::COLOR_BGR2HSV_FULL);
      cv::LUT(hsv, table, deep);
      cv::cvtColor(deep, colours, cv::COLOR_HSV2RGB_FULL);
      colours.convertTo(target, CV_8U, 1.5, -64);
    });
  }
};

}  // namespace

std::vector<Duel> drawingDuels(Scene& s) {
  const auto whereNothingWraps = [&s] {
    for (std::size_t i = 0; i < kBytes; ++i) {
      if (s.theirs[i] == 255) s.ours[i] = 255;
    }
    return difference(s.ours, s.theirs, kBytes);
  };
  const auto prague = [](auto* src, auto* dst, int w, int h) { Prague(src, dst, w, h, 0); };
  const auto cartoon = [](auto* src, auto* dst, int w, int h) { PragueCarton(src, dst, w, h, 0); };
  std::vector<Duel> duels = {
      drawing(s, s.grey, "Emboss", 1.5, 1, per_pixel::kEmboss, Emboss,
              "OpenCV cvtColor + filter2D + cvtColor", EmbossByFilter()),
      drawing(s, s.grey, "Sketch", 3.0, 1, per_pixel::kSketch, Sketch,
              "OpenCV cvtColor + 2 sepFilter2D + magnitude + convertTo + cvtColor",
              SketchByGradients()),
      drawing(s, s.packed, "Prague", 5.0, 1, per_pixel::kPrague, prague,
              "OpenCV 2 Sobel + magnitude + LUT + overlay of 6 calls + cvtColor",
              PragueByOverlay()),
      drawing(s, s.grey, "PragueCarton", 1.0, 1, per_pixel::kCartoon, cartoon,
              "OpenCV dilate + divide + cvtColor", CartoonByDivision()),
  };
  duels.back().difference = whereNothingWraps;
  duels.push_back(drawing(s, s.grey, "newsketch", 3.0, 1, per_pixel::kSketch + 2, sketchOnPaper,
                          "OpenCV: calls of Sketch + add of a ready paper",
                          SketchOnPaper{tintsOfPaper(), {}, {}}));
  duels.push_back(drawing(s, s.packed, "nature", 3.0, 3, per_pixel::kNature, nature,
                          "OpenCV cvtColor to HSV + LUT + cvtColor + convertTo, in bands",
                          NatureByHsv()));
  return duels;
}

}  // namespace alg::bench
