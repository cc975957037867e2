// The native of com.orvik.camera.common.Native.EffectAlgorithm.
#include <jni.h>

#include "effect/pipeline.h"
#include "jni/jni_support.h"
#include "libalgorithm/export.h"

extern "C" ALGORITHM_API void Java_com_orvik_camera_common_Native_EffectAlgorithm_Effect(
    JNIEnv* env, jclass, jobject buffer, jint width, jint height, jstring effectName) {
  const alg::CallScope call("EffectAlgorithm",
                            "void Java_com_orvik_camera_common_Native_EffectAlgorithm_Effect("
                            "JNIEnv*, jclass, jobject, jint, jint, jstring)");
  const auto size = alg::checkSize(call, width, height);
  if (!size) {
    return;
  }
  const auto frame = alg::checkBuffer(call, env, buffer, "frame", size->yuvBytes);
  if (!frame) {
    return;
  }
  const alg::StringChars name(call, env, effectName, "effect name");
  if (name.get() == nullptr) {
    return;
  }
  uint8_t* const chroma = frame->address + std::ptrdiff_t{width} * height;
  if (!alg::runEffect(name.get(), {frame->address, chroma, width, height, width, width})) {
    call.fail("failed: no memory for this frame");
  }
}
