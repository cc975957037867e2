// The natives of com.orvik.camera.common.Native.CodecDataAlgorithm.
#include <jni.h>

#include <utility>

#include "codec/jpeg_bridge.h"
#include "jni/jni_support.h"
#include "libalgorithm/export.h"

namespace {
constexpr char kTag[] = "CodecDataAlgorithm";

/// Whether the array has room for a width and a height, as far as the JNI environment can tell.
bool holdsSize(JNIEnv* env, jintArray size) {
  return size != nullptr &&
         (env->functions->GetArrayLength == nullptr || env->GetArrayLength(size) >= 2);
}
}  // namespace

extern "C" {

ALGORITHM_API jobject Java_com_orvik_camera_common_Native_CodecDataAlgorithm_JPEG2ARGB(
    JNIEnv* env, jclass, jobject jpeg, jintArray size) {
  const alg::CallScope call(
      kTag,
      "_jobject* Java_com_orvik_camera_common_Native_CodecDataAlgorithm_JPEG2ARGB("
      "JNIEnv*, jclass, jobject, jintArray)");
  const auto file = alg::directMemory(env, jpeg);
  if (!file) {
    call.fail("decode fail");
    return nullptr;
  }
  if (!holdsSize(env, size)) {
    call.fail("refused: the size array is null or shorter than 2");
    return nullptr;
  }
  auto image = alg::jpegToArgb(file->address, static_cast<std::size_t>(file->capacity));
  if (!image) {
    call.fail("decode fail");
    return nullptr;
  }
  const int64_t bytes = int64_t{image->width} * image->height * 4;
  const jint sides[2] = {image->width, image->height};
  env->SetIntArrayRegion(size, 0, 2, sides);
  return alg::toDirectBuffer(call, env, std::move(image->pixels), bytes);
}

ALGORITHM_API jbyteArray Java_com_orvik_camera_common_Native_CodecDataAlgorithm_ARGB2JPEG(
    JNIEnv* env, jclass, jobject pixels, jint width, jint height, jint quality) {
  const alg::CallScope call(
      kTag,
      "_jbyteArray* Java_com_orvik_camera_common_Native_CodecDataAlgorithm_ARGB2JPEG("
      "JNIEnv*, jclass, jobject, jint, jint, jint)");
  if (width < 1 || height < 1) {
    call.fail("encode fail");
    return nullptr;
  }
  const auto size = alg::checkSize(call, width, height);
  if (!size) {
    return nullptr;
  }
  const auto source = alg::checkBuffer(call, env, pixels, "pixel", size->argbBytes);
  if (!source) {
    return nullptr;
  }
  const auto jpeg = alg::argbToJpeg(source->address, width, height, quality);
  if (!jpeg) {
    call.fail("encode fail");
    return nullptr;
  }
  return alg::toByteArray(call, env, jpeg->bytes.get(), static_cast<int64_t>(jpeg->size));
}

}  // extern "C"
