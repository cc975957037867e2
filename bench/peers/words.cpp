// Images of 4-byte pixels: rotation, resize, blends and blurs, beside libyuv and OpenCV.
#include <libyuv.h>

#include <cmath>

#include "base/block.h"
#include "bench/peers/opencv.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/pretty_filters.h"

namespace alg::bench {
namespace {

constexpr std::size_t kBytes = 4 * kPixels;
constexpr int kPitch = kWidth * 4;
constexpr int kHalfWidth = kWidth / 2;
constexpr int kHalfHeight = kHeight / 2;

uint32_t* asWords(Bytes& bytes) { return reinterpret_cast<uint32_t*>(bytes.data()); }

cv::Mat mat(Bytes& bytes, int width, int height) { return {height, width, CV_8UC4, bytes.data()}; }

Duel quarterTurn(Scene& s, const char* work, int degrees, cv::RotateFlags code) {
  return {
      work,
      3.0,
      2 * kBytes,
      kBytes,
      0,
      [=, &s] { CameraUtil::rotateARGB(s.words.data(), s.ours.data(), kWidth, kHeight, degrees); },
      {{"OpenCV rotate", [=, &s] {
          cv::Mat turned = mat(s.theirs, kHeight, kWidth);
          cv::rotate(mat(s.words, kWidth, kHeight), turned, code);
        }}}};
}

/// What a pixel costs where rows of the source or of the result are a power of two apart. As many
/// pixels as the other image has.
[[maybe_unused]] Duel pitched(Scene& s, const char* work, int width, int height) {
  constexpr double kMostLoss = 1.1;
  const auto turn = [&s](int w, int h) {
    CameraUtil::rotateARGB90(s.words.data(), s.ours.data(), w, h);
  };
  const auto whole = [=, &s] {  // turned back
    const std::size_t bytes = 4 * pixelsOf(width, height);
    Bytes back(bytes);
    turn(width, height);
    CameraUtil::rotateARGB270(s.ours.data(), back.data(), height, width);
    return difference(back, s.words, bytes);
  };
  return {.work = work,
          .required = std::round(100 / kMostLoss) / 100,
          .moved = 2 * kBytes,
          .result = 0,
          .tolerance = 0,
          .ours = [=] { turn(width, height); },
          // To the same memory: where its pages happen to lie makes more of a difference than rows.
          .peers = {{"ours with rows of " + std::to_string(kPitch) + " bytes",
                     [=] { turn(kWidth, kHeight); }}},
          .difference = whole};
}

Duel halfTurn(Scene& s) {
  return {"rotate ARGB by 180",
          1.0,
          2 * kBytes,
          kBytes,
          0,
          [&s] { CameraUtil::rotateARGB180(s.words.data(), s.ours.data(), kWidth, kHeight); },
          {{"libyuv ARGBRotate", [&s] {
              libyuv::ARGBRotate(s.words.data(), kPitch, s.theirs.data(), kPitch, kWidth, kHeight,
                                 libyuv::kRotate180);
            }}}};
}

/// Both mix four neighbours (at half size libyuv takes their mean).
Duel resizing(Scene& s, const char* work, Bytes& from, int width, int height, int toWidth,
              int toHeight) {
  const std::size_t result = 4 * pixelsOf(toWidth, toHeight);
  return {
      .work = work,
      .required = 0.8,
      .moved = 4 * pixelsOf(width, height) + result,
      .result = result,
      .tolerance = 2.5,
      .ours = [=, &s,
               &from] { Resize(asWords(s.ours), toWidth, toHeight, asWords(from), width, height); },
      .peers = {{"libyuv ARGBScale, kFilterBilinear",
                 [=, &s, &from] {
                   libyuv::ARGBScale(from.data(), width * 4, width, height, s.theirs.data(),
                                     toWidth * 4, toWidth, toHeight, libyuv::kFilterBilinear);
                 }}},
      .operations = toWidth > width ? per_pixel::kDoubled : 0};
}

/// In place on a picture of its own.
Duel mixing(Scene& s) {
  constexpr int kWeight = 64;  // of 256
  return {"add2Image",
          1.0,
          3 * kBytes,
          kBytes,
          1,
          [&s] {
            CameraUtil::add2Image(s.words.data(), kWeight, s.ours.data(), 256 - kWeight, kBytes);
          },
          {{"libyuv ARGBInterpolate", [&s] {
              uint8_t* to = s.theirs.data();
              libyuv::ARGBInterpolate(to, kPitch, s.words.data(), kPitch, to, kPitch, kWidth,
                                      kHeight, kWeight);
            }}}};
}

using Blend = void(const uint8_t*, uint8_t*, unsigned int);
using Pick = void(cv::InputArray, cv::InputArray, cv::OutputArray);

Duel picking(Scene& s, const char* work, Blend* ours, const char* name, Pick* theirs) {
  return {work,
          1.0,
          3 * kBytes,
          kBytes,
          0,
          [=, &s] { ours(s.words.data(), s.ours.data(), kBytes); },
          {{name, [=, &s] {
              cv::Mat to = mat(s.theirs, kWidth, kHeight);
              theirs(mat(s.words, kWidth, kHeight), to, to);
            }}}};
}

/// Of two pictures the bytes nearer to a third one, which is that of the second a pixel on. Both
/// sides give memory that they have just allocated.
Duel background(Scene& s) {
  static Bytes moved(s.words.begin() + 4, s.words.end());
  moved.resize(kBytes);
  static Block ours;
  static cv::Mat theirs;
  const auto rowsOf = [](const Bytes& bytes) {
    return cv::Mat(kHeight, kPitch, CV_8U, const_cast<uint8_t*>(bytes.data()));
  };
  const auto nearer = [&s, rowsOf, far = cv::Mat(), farther = cv::Mat(),
                       first = cv::Mat()]() mutable {
    theirs.release();
    theirs.create(kHeight, kPitch, CV_8U);
    const cv::Mat b = rowsOf(s.words), c = rowsOf(s.before);
    inBands(rowsOf(moved), theirs, [&](const cv::Mat& a, cv::Mat& to, const cv::Range& rows) {
      cv::absdiff(b.rowRange(rows), a, far);
      cv::absdiff(c.rowRange(rows), a, farther);
      cv::compare(far, farther, first, cv::CMP_LT);
      c.rowRange(rows).copyTo(to);
      b.rowRange(rows).copyTo(to, first);
    });
  };
  return {.work = "getBackground",
          .required = 1.0,
          .moved = 4 * kBytes,
          .result = kBytes,
          .tolerance = 0,
          .ours =
              [&s] {
                ours.reset();  // as the peer's is given back before there is another
                ours.reset(CameraUtil::getBackground(moved.data(), s.words.data(), s.before.data(),
                                                     static_cast<int>(kBytes)));
              },
          .peers = {{"OpenCV 2 absdiff + compare + 2 copyTo, in bands", nearer}},
          .difference =
              [] {
                Nearness nearness;
                nearness.add(ours.get(), theirs.data, kBytes);
                return nearness;
              }};
}

/// The peer's radius is our peak everywhere.
Duel blurring(Scene& s, const char* work, double required, int radius, double tolerance,
              double operations, std::function<void()> ours) {
  return {.work = work,
          .required = required,
          .moved = 2 * kBytes,
          .result = kBytes,
          .tolerance = tolerance,
          .ours = std::move(ours),
          .peers = {{"libyuv ARGBBlur",
                     [&s, radius, sums = std::vector<int32_t>()]() mutable {
                       sums.resize(std::size_t{kPitch} * (kHeight + 1));
                       libyuv::ARGBBlur(s.words.data(), kPitch, s.theirs.data(), kPitch,
                                        sums.data(), kPitch, kWidth, kHeight, radius);
                     }}},
          .operations = operations};
}

}  // namespace

std::vector<Duel> wordDuels(Scene& s) {
  static Bytes half = picture(kHalfWidth, kHalfHeight, 4);
  std::vector<Duel> duels{
      quarterTurn(s, "rotate ARGB by 90", 90, cv::ROTATE_90_CLOCKWISE),
      halfTurn(s),
      quarterTurn(s, "rotate ARGB by 270", 270, cv::ROTATE_90_COUNTERCLOCKWISE),
      resizing(s, "Resize to half", s.words, kWidth, kHeight, kHalfWidth, kHalfHeight),
      resizing(s, "Resize to double", half, kHalfWidth, kHalfHeight, kWidth, kHeight),
      mixing(s),
      picking(s, "add2ImageByBrightness", CameraUtil::add2ImageByBrightness, "OpenCV max", cv::max),
      picking(s, "add2ImageByDarkness", CameraUtil::add2ImageByDarkness, "OpenCV min", cv::min),
      background(s),
      blurring(s, "ActiveBlur", 1.0, 12, 1.5, per_pixel::kSquare,
               [&s] { ActiveBlur(asWords(s.ours), asWords(s.words), 0, kWidth, kHeight); }),
      blurring(s, "blur", 1.2, 24, 2, per_pixel::kBox,
               [&s] { blur(s.ours.data(), asWords(s.words), kWidth, kHeight); }),
  };
#if defined(__x86_64__)                        // by time; instructions tell nothing of caches
  constexpr int kNarrow = 4096, kWide = 8192;  // of 16 and 32 KB
  constexpr int kMany = static_cast<int>(kPixels) / kNarrow;
  constexpr int kFew = static_cast<int>(kPixels) / kWide;
  duels.push_back(pitched(s, "rotate ARGB by 90, from rows of 16 KB", kNarrow, kMany));
  duels.push_back(pitched(s, "rotate ARGB by 90, from rows of 32 KB", kWide, kFew));
  duels.push_back(pitched(s, "rotate ARGB by 90, to rows of 16 KB", kMany, kNarrow));
  duels.push_back(pitched(s, "rotate ARGB by 90, to rows of 32 KB", kFew, kWide));
#endif
  return duels;
}

}  // namespace alg::bench
