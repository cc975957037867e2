// Rotations of images larger than caches and tiles, by other angles, and through the native.
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
