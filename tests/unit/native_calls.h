// The natives on small images, with their inputs: for tests that run them all.
#pragma once

#include "device_root.h"
#include "fake_jni.h"
#include "platform/jpeg.h"

constexpr int kWidth = 64, kHeight = 48;

/// A native with its input. Runs it and returns its result, or null when it works on a frame.
struct Call {
  const char* name;
  int inputBytes;
  bool inPlace;
  jobject (*run)(JNIEnv* env, jobject input, jobject output);
};

inline constexpr char kCurves[] = "PrettyBlue", kPicture[] = "PrettyJapan";

inline jint toJava(int number) { return number; }
inline jstring toJava(const char* chars) { return FakeJni::text(chars); }

/// Calls a native with its input and some numbers, or a name.
template <auto kNative, auto... kOthers>
jobject plain(JNIEnv* env, jobject in, jobject /*out*/) {
  if constexpr (std::is_void_v<decltype(kNative(env, nullptr, in, toJava(kOthers)...))>) {
    return kNative(env, nullptr, in, toJava(kOthers)...), nullptr;
  } else {
    return kNative(env, nullptr, in, toJava(kOthers)...);
  }
}

inline jobject rotate(JNIEnv* env, jobject in, jobject out) {
  ROTATE(env, nullptr, out, in, kWidth, kHeight, 90);
  return nullptr;
}

inline jobject decode(JNIEnv* env, jobject in, jobject /*out*/) {
  jint size[2];
  return JPEG2ARGB(env, nullptr, in, reinterpret_cast<jintArray>(size));
}

constexpr int kFrame = kWidth * kHeight * 3 / 2, kArgb = kWidth * kHeight * 4;
inline const Call kCalls[] = {
    {"YUV2ARGB", kFrame, false, plain<YUV2ARGB, kWidth, kHeight>},
    {"ARGB2YVU", kArgb, false, plain<ARGB2YVU, kWidth, kHeight>},
    {"rotateYUV", kFrame, true, rotate},
    {"ARGB2JPEG", kArgb, false, plain<ARGB2JPEG, kWidth, kHeight, 90>},
    {"JPEG2ARGB", 0, false, decode},
    {"Effect in one pass", kFrame, true, plain<EFFECT, kWidth, kHeight, kCurves>},
    {"Effect in phases", kFrame, true, plain<EFFECT, kWidth - 1, kHeight - 1, kCurves>},
    {"Effect with a picture", kFrame, true, plain<EFFECT, kWidth, kHeight, kPicture>},
    {"Effect with a picture in phases", kFrame, true, plain<EFFECT, kWidth - 1, kHeight, kPicture>},
    {"SFBProcess", kFrame, true, plain<SFB, kWidth, kHeight, 1, 2, 3>},
};

inline Bytes resultOf(const Call& call, FakeJni& jni, Bytes input) {
  Bytes other = noise(kFrame, 2);
  FakeBuffer in{input.data(), jlong(input.size())}, out{other.data(), kFrame};
  const jobject result = call.run(jni.env(), in, out);
  return call.inPlace ? input : jni.take(result);
}

inline Bytes inputOf(const Call& call) {
  const Bytes pixels = noise(std::max(call.inputBytes, kArgb), 3);
  if (call.inputBytes > 0) return {pixels.begin(), pixels.begin() + call.inputBytes};
  const auto jpeg = alg::encodeJpeg(pixels.data(), kWidth, kHeight, 80);
  return {jpeg->bytes.get(), jpeg->bytes.get() + jpeg->size};
}

/// A device with what the calls need: a picture and an engine.
class NativesDevice : public DeviceRoot {
 public:
  explicit NativesDevice(const char* engine) {
    writePicture("sucai3.png", 9, 8);
    putEngine(engine);
  }
};
