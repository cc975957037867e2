// Rotations against the reference.
#include "fake_jni.h"
#include "guarded.h"
#include "libalgorithm/camera_util.h"
#include "vector_targets.h"

namespace {

using ref::Turn;

const struct Rotation {
  bool yuv;
  Turn turn;
  void (*routine)(const uint8_t*, uint8_t*, int, int);
  int degrees;
} kRotations[] = {{true, Turn::kCounterClockwise, CameraUtil::rotateYUV90, 90},
                  {true, Turn::kHalf, CameraUtil::rotateYUV180, 180},
                  {true, Turn::kClockwise, CameraUtil::rotateYUV270, 270},
                  {false, Turn::kClockwise, CameraUtil::rotateARGB90, 90},
                  {false, Turn::kHalf, CameraUtil::rotateARGB180, 180},
                  {false, Turn::kCounterClockwise, CameraUtil::rotateARGB270, 270}};

/// The sizes are the destination's for YUV and the source's for ARGB.
void check(const Rotation& r, int width, int height, bool dispatched) {
  const int pixels = width * height, other = r.turn == Turn::kHalf ? width : height;
  const Guarded src(noise(r.yuv ? pixels * 3 / 2 : pixels * 4)), dst(Bytes(src.bytes().size()));
  Bytes expected = dst.bytes();
  const auto turn = [&](int at, int srcPitch, int dstPitch, int w, int h, int bytes) {
    ref::rotate(src.data() + at, srcPitch, expected.data() + at, dstPitch, w, h, bytes, r.turn);
  };
  if (r.yuv) {
    turn(0, other, width, width, height, 1);
    turn(pixels, other, width, width / 2, height / 2, 2);
  } else {
    turn(0, width * 4, other * 4, other, pixels / other, 4);
  }
  if (!dispatched) {
    r.routine(src.data(), dst.data(), width, height);
  } else if (r.yuv && (width | height) % 2 == 0) {
    FakeBuffer from{src.data(), jlong(expected.size())}, to{dst.data(), jlong(expected.size())};
    ROTATE(FakeJni().env(), nullptr, from, to, width, height, r.degrees);
  } else {
    const auto dispatcher = r.yuv ? CameraUtil::rotateYUV : CameraUtil::rotateARGB;
    dispatcher(src.data(), dst.data(), width, height, r.degrees);
  }
  EXPECT_TRUE(same(dst.bytes(), expected)) << r.yuv << r.degrees << " " << width << "x" << height;
}

TEST(Rotate, EverySizeTurnsAsTheReference) {
  onEachTarget([] {
    for (const Rotation& r : kRotations) {
      for (int i = 0; i < 400; ++i) check(r, i / 20 + 1, i % 20 + 1, i % 3 == 0);
      for (int i = 0; i < 99; ++i) check(r, i * 29 % 90 + 20, i * 17 % 99 + 20, false);
      check(r, 130, 66, true);
      check(r, 258, 1090, false);  // several tiles in both directions
      check(r, r.yuv ? 2086 : 1034, r.yuv ? 2018 : 1018, false);         // larger than caches
      for (const int degrees : {0, 360, -90, 45, 450, r.degrees + 1}) {  // nothing to do
        (r.yuv ? CameraUtil::rotateYUV : CameraUtil::rotateARGB)(nullptr, nullptr, 4, 4, degrees);
      }
      for (const auto& [width, height] : kSizesBelowOne) r.routine(nullptr, nullptr, width, height);
    }
  });
}

}  // namespace
