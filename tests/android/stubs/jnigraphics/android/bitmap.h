// What android/ uses of Android's header of this name, which is not on a desk; from its
// documentation.
#pragma once

#include <jni.h>

#include <cstdint>

extern "C" {

enum {
  ANDROID_BITMAP_RESULT_SUCCESS = 0,
  ANDROID_BITMAP_RESULT_BAD_PARAMETER = -1,
  ANDROID_BITMAP_RESULT_JNI_EXCEPTION = -2,
  ANDROID_BITMAP_RESULT_ALLOCATION_FAILED = -3,
};

enum AndroidBitmapFormat {
  ANDROID_BITMAP_FORMAT_NONE = 0,
  ANDROID_BITMAP_FORMAT_RGBA_8888 = 1,
  ANDROID_BITMAP_FORMAT_RGB_565 = 4,
};

struct AndroidBitmapInfo {
  uint32_t width;
  uint32_t height;
  uint32_t stride;  ///< bytes of a row
  int32_t format;   ///< an AndroidBitmapFormat
  uint32_t flags;
};

int AndroidBitmap_getInfo(JNIEnv* env, jobject object, AndroidBitmapInfo* info);
int AndroidBitmap_lockPixels(JNIEnv* env, jobject object, void** address);
int AndroidBitmap_unlockPixels(JNIEnv* env, jobject object);
}
