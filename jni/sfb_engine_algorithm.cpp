// The native of com.orvik.camera.common.Native.SFBEngineAlgorithm.
#include <android/log.h>
#include <jni.h>

#include "jni/jni_support.h"
#include "libalgorithm/export.h"
#include "sfb/beauty_engine.h"

namespace {
constexpr char kTag[] = "CodecDataAlgorithm";  // shared with the codec's natives
}

extern "C" ALGORITHM_API void Java_com_orvik_camera_common_Native_SFBEngineAlgorithm_SFBProcess(
    JNIEnv* env, jclass, jobject buffer, jint width, jint height, jint smooth, jint toning,
    jint slimming) {
  const alg::CallScope call(kTag,
                            "Java_com_orvik_camera_common_Native_SFBEngineAlgorithm_SFBProcess");
  const alg::SfbLevels levels = alg::sfbLevels(smooth, toning, slimming);
  if (levels.mode == 0) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "SFBProcess X all is 0. so make mode to 0");
  }
  const auto size = alg::checkEvenSize(call, width, height);
  if (!size) {
    return;
  }
  const auto frame = alg::checkBuffer(call, env, buffer, "frame", size->yuvBytes);
  if (!frame) {
    return;
  }
  alg::GtImage image;
  alg::vfb_init_gtimage(&image, alg::kGtTwoPlanes, width, height, width, height, frame->address);
  alg::SFBProcess(&image, &levels);
}
