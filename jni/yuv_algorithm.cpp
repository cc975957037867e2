// The natives of com.orvik.camera.common.Native.YUVAlgorithm.
#include <jni.h>

#include <functional>
#include <utility>

#include "jni/jni_support.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/export.h"
#include "libalgorithm/yuv_convert.h"

namespace {

constexpr char kTag[] = "YUVAlgorithm";

using Decoder = decltype(decodeYUV2ARGB_LUT);
using Encoder = decltype(decodeARGB2YUV_OpenGL);

/// Decodes a frame into a new direct buffer of ARGB words; null after an error line.
jobject decode(const char* signature, JNIEnv* env, jobject buffer, jint width, jint height,
               Decoder* decoder) {
  const alg::CallScope call(kTag, signature);
  const auto size = alg::checkSize(call, width, height);
  if (!size) {
    return nullptr;
  }
  const auto source = alg::checkBuffer(call, env, buffer, "source", size->yuvBytes);
  if (!source) {
    return nullptr;
  }
  alg::Block result = alg::allocateResult(call, size->argbBytes);
  if (!result) {
    return nullptr;
  }
  decoder(reinterpret_cast<uint32_t*>(result.get()), source->address,
          source->address + std::ptrdiff_t{width} * height, width, height, width, width);
  return alg::toDirectBuffer(call, env, std::move(result), size->argbBytes);
}

/// Encodes ARGB words into a new direct buffer with a frame; null after an error line.
jobject encode(const char* signature, JNIEnv* env, jobject buffer, jint width, jint height,
               Encoder* encoder) {
  const alg::CallScope call(kTag, signature);
  const auto size = alg::checkSize(call, width, height);
  if (!size) {
    return nullptr;
  }
  const auto source = alg::checkBuffer(call, env, buffer, "source", size->argbBytes);
  if (!source) {
    return nullptr;
  }
  alg::Block result = alg::allocateResult(call, size->yuvBytes);
  if (!result) {
    return nullptr;
  }
  encoder(reinterpret_cast<const uint32_t*>(source->address), result.get(),
          result.get() + std::ptrdiff_t{width} * height, width, height, width, width);
  return alg::toDirectBuffer(call, env, std::move(result), size->yuvBytes);
}

bool overlap(const alg::BufferMemory& a, const alg::BufferMemory& b, int64_t bytes) {
  const std::less<> before;
  return before(a.address, b.address + bytes) && before(b.address, a.address + bytes);
}

}  // namespace

extern "C" {

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_YUVAlgorithm_minify(JNIEnv*, jclass,
                                                                              jobject, jint, jint,
                                                                              jint) {
  const alg::CallScope call(kTag,
                            "_jobject* Java_com_orvik_camera_common_Native_YUVAlgorithm_minify("
                            "JNIEnv*, jclass, jobject, jint, jint, jint)");
  return nullptr;
}

ALGORITHM_API jintArray Java_com_orvik_camera_common_Native_YUVAlgorithm_convertToARGB(JNIEnv*,
                                                                                       jclass,
                                                                                       jobject,
                                                                                       jint, jint) {
  const alg::CallScope call(
      kTag,
      "_jintArray* Java_com_orvik_camera_common_Native_YUVAlgorithm_convertToARGB("
      "JNIEnv*, jclass, jobject, jint, jint)");
  return nullptr;
}

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_YUVAlgorithm_YUV2ARGB(JNIEnv* env, jclass,
                                                                                jobject source,
                                                                                jint width,
                                                                                jint height) {
  return decode(
      "_jobject* Java_com_orvik_camera_common_Native_YUVAlgorithm_YUV2ARGB("
      "JNIEnv*, jclass, jobject, jint, jint)",
      env, source, width, height, decodeYUV2ARGB_LUT);
}

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_YUVAlgorithm_ARGB2YUV(JNIEnv* env, jclass,
                                                                                jobject source,
                                                                                jint width,
                                                                                jint height) {
  return encode(
      "_jobject* Java_com_orvik_camera_common_Native_YUVAlgorithm_ARGB2YUV("
      "JNIEnv*, jclass, jobject, jint, jint)",
      env, source, width, height, decodeARGB2YUV_OpenGL);
}

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_YUVAlgorithm_YVU2ARGB(JNIEnv* env, jclass,
                                                                                jobject source,
                                                                                jint width,
                                                                                jint height) {
  return decode(
      "_jobject* Java_com_orvik_camera_common_Native_YUVAlgorithm_YVU2ARGB("
      "JNIEnv*, jclass, jobject, jint, jint)",
      env, source, width, height, decodeYVU2ARGB_OpenGL);
}

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_YUVAlgorithm_ARGB2YVU(JNIEnv* env, jclass,
                                                                                jobject source,
                                                                                jint width,
                                                                                jint height) {
  return encode(
      "_jobject* Java_com_orvik_camera_common_Native_YUVAlgorithm_ARGB2YVU("
      "JNIEnv*, jclass, jobject, jint, jint)",
      env, source, width, height, decodeARGB2YVU_OpenGL);
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_YUVAlgorithm_rotateYUV(
    JNIEnv* env, jclass, jobject source, jobject destination, jint width, jint height,
    jint degrees) {
  const alg::CallScope call(kTag,
                            "void Java_com_orvik_camera_common_Native_YUVAlgorithm_rotateYUV("
                            "JNIEnv*, jclass, jobject, jobject, jint, jint, jint)");
  const auto size = alg::checkEvenSize(call, width, height);
  if (!size) {
    return;
  }
  const auto src = alg::checkBuffer(call, env, source, "source", size->yuvBytes);
  if (!src) {
    return;
  }
  const auto dst = alg::checkBuffer(call, env, destination, "destination", size->yuvBytes);
  if (!dst) {
    return;
  }
  const bool turns = degrees == 90 || degrees == 180 || degrees == 270;
  if (turns && overlap(*src, *dst, size->yuvBytes)) {
    call.fail("refused: the source and destination buffers overlap");
    return;
  }
  CameraUtil::rotateYUV(src->address, dst->address, width, height, degrees);
}

}  // extern "C"
