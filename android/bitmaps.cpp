// The natives of com.orvik.camera.common.Native.Bitmaps: where a Bitmap's pixels are. What is done
// to them is Images' work; this library has no pixel code and no C++ runtime.
#include <android/bitmap.h>
#include <jni.h>

#include <cstdint>
#include <iterator>
#include <limits>

#include "libalgorithm/export.h"

namespace {

constexpr jint kTooLarge = -100;  // beside the results of <android/bitmap.h>

/// The pixels as a direct buffer. Where that fails they are unlocked again, and the exception
/// stays.
jobject toBuffer(JNIEnv* env, jobject bitmap, void* pixels, int64_t bytes) {
  jobject buffer = env->NewDirectByteBuffer(pixels, bytes);
  if (buffer == nullptr) {
    jthrowable pending = env->ExceptionOccurred();
    env->ExceptionClear();  // under which nothing may be unlocked
    AndroidBitmap_unlockPixels(env, bitmap);
    if (pending != nullptr) {
      env->Throw(pending);
    }
  }
  return buffer;
}

}  // namespace

/// The pixels of a bitmap of format RGBA_8888, locked; null when it has another format, is too
/// large or can't be locked. Fills layout: the result (0, or what has failed), width, height, row
/// stride, format.
extern "C" ALGORITHM_API jobject Java_com_orvik_camera_common_Native_Bitmaps_lock(
    JNIEnv* env, jclass, jobject bitmap, jintArray layout) {
  AndroidBitmapInfo info{};
  void* pixels = nullptr;
  jobject buffer = nullptr;
  jint result = AndroidBitmap_getInfo(env, bitmap, &info);
  if (result == ANDROID_BITMAP_RESULT_SUCCESS && info.format == ANDROID_BITMAP_FORMAT_RGBA_8888) {
    const int64_t bytes = int64_t{info.stride} * info.height;
    result = bytes > std::numeric_limits<jint>::max()
                 ? kTooLarge
                 : AndroidBitmap_lockPixels(env, bitmap, &pixels);
    if (result == ANDROID_BITMAP_RESULT_SUCCESS) {
      buffer = toBuffer(env, bitmap, pixels, bytes);
    }
  }
  if (env->ExceptionCheck() == JNI_FALSE) {
    const jint values[] = {result, static_cast<jint>(info.width), static_cast<jint>(info.height),
                           static_cast<jint>(info.stride), info.format};
    env->SetIntArrayRegion(layout, 0, std::size(values), values);
  }
  return buffer;
}

/// Gives a lock back; the bitmap is then drawn with its new pixels. The result is 0 or what has
/// failed.
extern "C" ALGORITHM_API jint Java_com_orvik_camera_common_Native_Bitmaps_unlock(JNIEnv* env,
                                                                                 jclass,
                                                                                 jobject bitmap) {
  return AndroidBitmap_unlockPixels(env, bitmap);
}
