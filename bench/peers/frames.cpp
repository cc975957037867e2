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
  return {work,
          1.0,
          kFrame + 4 * kPixels,
          4 * kPixels,
          1,
          [=, &s] { ours(asWords(s.ours), y, uv, kWidth, kHeight, kWidth, kWidth); },
          {{name,
            [=, &s] { theirs(y, kWidth, uv, kWidth, s.theirs.data(), kPitch, kWidth, kHeight); }}}};
}

/// The peer takes a block's mean for its chroma, ours its bottom left pixel.
Duel encoding(Scene& s, const char* work, Encode* ours, const char* name,
              decltype(libyuv::ARGBToNV12)* theirs) {
  return {work,
          1.0,
          kFrame + 4 * kPixels,
          kFrame,
          1,
          [=, &s] {
            ours(asWords(s.words), s.ours.data(), s.ours.data() + kPixels, kWidth, kHeight, kWidth,
                 kWidth);
          },
          {{name, [=, &s] {
              theirs(s.words.data(), kPitch, s.theirs.data(), kWidth, s.theirs.data() + kPixels,
                     kWidth, kWidth, kHeight);
            }}}};
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
      turning(s, "rotate NV12 by 90", 90, libyuv::kRotateCounterClockwise),
      halfTurn(s),
      turning(s, "rotate NV12 by 270", 270, libyuv::kRotateClockwise),
  };
}

}  // namespace alg::bench
