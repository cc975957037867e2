// Rotations of images larger than caches and tiles, past the caches, by other angles, and through
// the native.
#include "camerautil/turn_rows.h"
#include "fake_jni.h"
#include "libalgorithm/camera_util.h"
#include "operation_check.h"

namespace {

TEST(Rotate, LargeImages) {
  for (const char* name : {"rotate-yuv-90", "rotate-yuv-180", "rotate-yuv-270", "rotate-argb-90",
                           "rotate-argb-180", "rotate-argb-270"}) {
    const Trial trial(operationNamed(name), 2018, 2086);
    check(trialOn(*trial.operation, noise(int(trial.resultBytes())), 2018, 2086));
  }
}

/// Transposes into a block that begins anywhere in a line, and returns all of it.
template <class Transpose>
Bytes transposed(Transpose run, std::size_t bytes, int columns, int rows, bool stream) {
  const int size = int(bytes), gap = columns % 3 == 0 ? 1024 - size * columns % 1024 : columns % 7;
  const int pitch = size * columns + gap, toPitch = size * rows + rows % 5;
  const Bytes src = noise(pitch * rows);
  Bytes dst = noise(toPitch * columns + 64, 7);
  uint8_t* const first = dst.data() + columns % 64;
  run(bytes, {src.data() + pitch * (rows - 1), -pitch}, {first, toPitch}, columns, rows, stream);
  return dst;
}

TEST(Rotate, TransposesPastTheCachesOrNot) {
  for (const std::size_t bytes : {1u, 2u, 4u}) {
    for (const int columns : {3, 15, 63, 131, 144, 1039, 1041, 2100}) {
      for (const int rows : {1, 7, 65, 129, 200, 321}) {
        SCOPED_TRACE(testing::Message() << bytes << ": " << columns << " x " << rows);
        const Bytes expected = transposed(alg::transposePlain, bytes, columns, rows, false);
        onEachTarget([&] {
          EXPECT_TRUE(same(transposed(alg::transpose, bytes, columns, rows, false), expected));
          EXPECT_TRUE(same(transposed(alg::transpose, bytes, columns, rows, true), expected));
        });
      }
    }
  }
}

TEST(Rotate, MirrorsPastTheCaches) {
  for (const std::size_t bytes : {1u, 2u, 4u}) {
    for (std::size_t count = 1; count < 700; count += 1 + count / 8) {
      for (const std::size_t shift : {0u, 1u, 4u, 62u}) {
        const Bytes src = noise(int(bytes * count));
        const Bytes dst = noise(int(src.size()) + 64, 7);
        Bytes expected = dst;
        alg::mirrorPlain(bytes, src.data(), expected.data() + shift, count);
        onEachTarget([&] {
          Bytes got = dst;
          alg::mirror(bytes, src.data(), got.data() + shift, count, true);
          EXPECT_TRUE(same(got, expected)) << bytes << " x " << count << " shift " << shift;
        });
      }
    }
  }
}

TEST(Rotate, TheNativeTurnsFramesAndOtherAnglesDoNothing) {
  for (const int degrees : {90, 180, 270}) {
    Trial trial(operationNamed("rotate-yuv"), 38, 22);
    trial.call.values[0] = degrees;
    alg::setResultSize(*trial.operation, trial.call);
    trial.src = noise(int(trial.resultBytes())), trial.dst = Bytes(trial.resultBytes());
    const auto native = [&](const alg::Call& call) {
      FakeBuffer from{call.src, jlong(trial.src.size())}, to{call.dst, jlong(trial.dst.size())};
      ROTATE(FakeJni().env(), nullptr, from, to, call.resultWidth, call.resultHeight, degrees);
    };
    EXPECT_TRUE(same(resultOf<Guarded>(trial, native), expectedOf(trial))) << degrees;
  }
  for (const int degrees : {0, 360, -90, 45, 450, 91, 181, 271}) {
    CameraUtil::rotateYUV(nullptr, nullptr, 4, 4, degrees);
    CameraUtil::rotateARGB(nullptr, nullptr, 4, 4, degrees);
  }
}

}  // namespace
