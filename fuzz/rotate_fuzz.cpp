// The rotations against the reference, odd sizes and sizes below 1 too.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "libalgorithm/camera_util.h"

namespace {

using ref::Turn;

constexpr struct Rotation {
  bool yuv;
  int degrees;
  Turn turn;
} kRotations[] = {{true, 90, Turn::kCounterClockwise}, {true, 180, Turn::kHalf},
                  {true, 270, Turn::kClockwise},       {false, 90, Turn::kClockwise},
                  {false, 180, Turn::kHalf},           {false, 270, Turn::kCounterClockwise}};

/// Sizes are the destination's for YUV and the source's for ARGB.
void reference(const Rotation& r, const Bytes& src, Bytes& dst, int width, int height) {
  const int pixels = width * height, other = r.turn == Turn::kHalf ? width : height;
  const auto turn = [&](int at, int srcPitch, int dstPitch, int w, int h, int bytes) {
    ref::rotate(src.data() + at, srcPitch, dst.data() + at, dstPitch, w, h, bytes, r.turn);
  };
  if (r.yuv) {
    turn(0, other, width, width, height, 1);
    turn(pixels, other, width, width / 2, height / 2, 2);
  } else {
    turn(0, width * 4, other * 4, other, pixels / other, 4);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Rotation& r = input.pick(kRotations);
  const int most = input.byte() % 32 == 1 ? 1200000 : 16000;  // large ones go past the cache
  int width = input.side(most), height = input.side(most / width);
  const int pixels = width * height;
  const Bytes src = input.fill(r.yuv ? pixels * 3 / 2 : pixels * 4),
              dst = input.fill(int(src.size()));
  Bytes expected = dst;
  const int below = input.byte();
  if (below == 1) width = -width;
  if (below == 2) height = 0;
  if (width > 0 && height > 0) reference(r, src, expected, width, height);
  onEachVectorTarget([&] {
    Bytes got = dst;
    (r.yuv ? CameraUtil::rotateYUV : CameraUtil::rotateARGB)(src.data(), got.data(), width, height,
                                                             r.degrees);
    expectSame(got, expected, r.yuv ? "rotated frame" : "rotated words");
  });
  return 0;
}
