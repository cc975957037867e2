// Frames: conversion and rotation, beside libyuv.
#include <libyuv.h>

#include "bench/peers/duel.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {
namespace {

constexpr std::size_t kFrame = kPixels * 3 / 2;
constexpr int kPitch = kWidth * 4;  // of an ARGB image

uint32_t* asWords(Bytes& bytes) { return reinterpret_cast<uint32_t*>(bytes.data()); }

using Decode = decltype(decodeYUV2ARGB_LUT);
using Encode = decltype(decodeARGB2YUV_OpenGL);

Duel decoding(Scene& s, const char* work, Decode* ours, const char* name,
              decltype(libyuv::NV12ToARGB)* theirs) {
  const uint8_t* y = s.frame.data();
  const uint8_t* uv = y + kPixels;
  return {.work = work,
          .required = 1.0,
          .moved = kFrame + 4 * kPixels,
          .result = 4 * kPixels,
          .tolerance = 1,
          .ours = [=, &s] { ours(asWords(s.ours), y, uv, kWidth, kHeight, kWidth, kWidth); },
          .peers = {{name,
                     [=, &s] {
                       theirs(y, kWidth, uv, kWidth, s.theirs.data(), kPitch, kWidth, kHeight);
                     }}},
          .operations = per_pixel::kDecode};
}

/// The peer takes a block's mean for its chroma, ours its bottom left pixel.
Duel encoding(Scene& s, const char* work, Encode* ours, const char* name,
              decltype(libyuv::ARGBToNV12)* theirs) {
  return {.work = work,
          .required = 1.0,
          .moved = kFrame + 4 * kPixels,
          .result = kFrame,
          .tolerance = 1,
          .ours =
              [=, &s] {
                ours(asWords(s.words), s.ours.data(), s.ours.data() + kPixels, kWidth, kHeight,
                     kWidth, kWidth);
              },
          .peers = {{name,
                     [=, &s] {
                       theirs(s.words.data(), kPitch, s.theirs.data(), kWidth,
                              s.theirs.data() + kPixels, kWidth, kWidth, kHeight);
                     }}},
          .operations = per_pixel::kEncode};
}

/// Pixel `index` of an image of words.
void fetchWord(void* words, int index, int* red, int* green, int* blue) {
  const uint8_t* pixel = static_cast<const uint8_t*>(words) + std::ptrdiff_t{4} * index;
  *red = pixel[2], *green = pixel[1], *blue = pixel[0];
}

/// Both call back for each pixel; the peer gathers two rows and encodes them.
Duel pulling(Scene& s, PixelFetchFunc fetch) {
  return {.work = "ARGB -> I420, through a callback (decodeARGB2YUV420P)",
          .required = 0.8,
          .moved = kFrame + 4 * kPixels,
          .result = kFrame,
          .tolerance = 1,
          .ours =
              [=, &s] {
                decodeARGB2YUV420P(s.words.data(), fetch, s.ours.data(), s.ours.data() + kPixels,
                                   kWidth, kHeight, kWidth);
              },
          .peers = {{"libyuv ARGBToI420, two gathered rows at a time",
                     [=, &s, rows = Bytes(2 * kPitch)]() mutable {
                       uint8_t* y = s.theirs.data();
                       for (int row = 0; row < kHeight; row += 2) {
                         uint8_t* to = rows.data();
                         for (int i = row * kWidth; i < (row + 2) * kWidth; ++i, to += 4) {
                           int red, green, blue;
                           fetch(s.words.data(), i, &red, &green, &blue);
                           to[0] = static_cast<uint8_t>(blue), to[1] = static_cast<uint8_t>(green),
                           to[2] = static_cast<uint8_t>(red);
                         }
                         uint8_t* u = y + kPixels + pixelsOf(kWidth / 2, row / 2);
                         libyuv::ARGBToI420(rows.data(), kPitch, y + pixelsOf(kWidth, row), kWidth,
                                            u, kWidth / 2, u + kPixels / 4, kWidth / 2, kWidth, 2);
                       }
                     }}},
          .operations = per_pixel::kEncode};
}

/// By a quarter turn. libyuv has none that leaves the chroma interleaved: its NV12ToI420Rotate is
/// RotatePlane and SplitRotateUV, whose two planes MergeUVPlane puts together here.
Duel turning(Scene& s, const char* work, int degrees, libyuv::RotationMode mode) {
  constexpr int kW = kWidth / 2, kH = kHeight / 2;  // of the chroma
  const uint8_t* y = s.frame.data();
  return {work,
          2.0,
          2 * kFrame,
          kFrame,
          0,
          [=, &s] { CameraUtil::rotateYUV(y, s.ours.data(), kHeight, kWidth, degrees); },
          {{"libyuv RotatePlane + SplitRotateUV + MergeUVPlane",
            [=, &s, u = Bytes(kPixels / 4), v = Bytes(kPixels / 4)]() mutable {
              uint8_t* to = s.theirs.data();
              libyuv::RotatePlane(y, kWidth, to, kHeight, kWidth, kHeight, mode);
              libyuv::SplitRotateUV(y + kPixels, kWidth, u.data(), kH, v.data(), kH, kW, kH, mode);
              libyuv::MergeUVPlane(u.data(), kH, v.data(), kH, to + kPixels, kHeight, kH, kW);
            }}}};
}

/// Upside down and mirrored is a half turn.
Duel halfTurn(Scene& s) {
  const uint8_t* y = s.frame.data();
  return {"rotate NV12 by 180",
          1.0,
          2 * kFrame,
          kFrame,
          0,
          [=, &s] { CameraUtil::rotateYUV(y, s.ours.data(), kWidth, kHeight, 180); },
          {{"libyuv NV12Mirror, height negative", [=, &s] {
              uint8_t* to = s.theirs.data();
              libyuv::NV12Mirror(y, kWidth, y + kPixels, kWidth, to, kWidth, to + kPixels, kWidth,
                                 kWidth, -kHeight);
            }}}};
}

}  // namespace

std::vector<Duel> frameDuels(Scene& s) {
  return {
      decoding(s, "NV12 -> ARGB", decodeYUV2ARGB_LUT, "libyuv NV12ToARGB", libyuv::NV12ToARGB),
      decoding(s, "NV21 -> ARGB", decodeYVU2ARGB_OpenGL, "libyuv NV21ToARGB", libyuv::NV21ToARGB),
      encoding(s, "ARGB -> NV12", decodeARGB2YUV_OpenGL, "libyuv ARGBToNV12", libyuv::ARGBToNV12),
      encoding(s, "ARGB -> NV21", decodeARGB2YVU_OpenGL, "libyuv ARGBToNV21", libyuv::ARGBToNV21),
      pulling(s, fetchWord),
      turning(s, "rotate NV12 by 90", 90, libyuv::kRotateCounterClockwise),
      halfTurn(s),
      turning(s, "rotate NV12 by 270", 270, libyuv::kRotateClockwise),
  };
}

}  // namespace alg::bench
