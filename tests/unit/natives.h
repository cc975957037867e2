// The natives by short names.
#pragma once

#include <jni.h>

#define NATIVE(result, name, symbol, ...)                                                       \
  extern "C" result Java_com_orvik_camera_common_Native_##symbol(JNIEnv*, jclass, __VA_ARGS__); \
  constexpr auto* name = Java_com_orvik_camera_common_Native_##symbol
NATIVE(jobject, YUV2ARGB, YUVAlgorithm_YUV2ARGB, jobject, jint, jint);
NATIVE(jobject, ARGB2YVU, YUVAlgorithm_ARGB2YVU, jobject, jint, jint);
NATIVE(void, ROTATE, YUVAlgorithm_rotateYUV, jobject, jobject, jint, jint, jint);
NATIVE(jobject, JPEG2ARGB, CodecDataAlgorithm_JPEG2ARGB, jobject, jintArray);
NATIVE(jbyteArray, ARGB2JPEG, CodecDataAlgorithm_ARGB2JPEG, jobject, jint, jint, jint);
NATIVE(void, EFFECT, EffectAlgorithm_Effect, jobject, jint, jint, jstring);
NATIVE(void, SFB, SFBEngineAlgorithm_SFBProcess, jobject, jint, jint, jint, jint, jint);
#undef NATIVE
