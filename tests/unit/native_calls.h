// The natives on small images, with their inputs: for tests that run them all.
#pragma once

#include "device_root.h"
#include "fake_jni.h"
#include "platform/jpeg.h"

constexpr int kWidth = 64, kHeight = 48;

/// A native with its input. Runs it and returns its result, or the frame that it works on.
struct Call {
  const char* name;
  int inputBytes;
  bool inPlace;
  jobject (*run)(FakeJni& jni, jobject input, jobject output);
  bool mayPassThrough = false;  // a picture that can't be had turns an effect into none
};

template <int kWide, int kHigh>
jobject runEffect(JNIEnv* env, jobject frame, const char* name) {
  EFFECT(env, nullptr, frame, kWide, kHigh, FakeJni::text(name));
  return nullptr;
}

constexpr int kFrame = kWidth * kHeight * 3 / 2, kArgb = kWidth * kHeight * 4;
inline const Call kCalls[] = {
    {"YUV2ARGB", kFrame, false,
     [](FakeJni& jni, jobject in, jobject) {
       return YUV2ARGB(jni.env(), nullptr, in, kWidth, kHeight);
     }},
    {"ARGB2YVU", kArgb, false,
     [](FakeJni& jni, jobject in, jobject) {
       return ARGB2YVU(jni.env(), nullptr, in, kWidth, kHeight);
     }},
    {"rotateYUV", kFrame, true,
     [](FakeJni& jni, jobject in, jobject out) {
       ROTATE(jni.env(), nullptr, out, in, kWidth, kHeight, 90);
       return jobject{};
     }},
    {"ARGB2JPEG", kArgb, false,
     [](FakeJni& jni, jobject in, jobject) {
       return static_cast<jobject>(ARGB2JPEG(jni.env(), nullptr, in, kWidth, kHeight, 90));
     }},
    {"JPEG2ARGB", 0, false,
     [](FakeJni& jni, jobject in, jobject) {
       jint size[2];
       return JPEG2ARGB(jni.env(), nullptr, in, reinterpret_cast<jintArray>(size));
     }},
    {"Effect in one pass", kFrame, true,
     [](FakeJni& jni, jobject in, jobject) {
       return runEffect<kWidth, kHeight>(jni.env(), in, "PrettyBlue");
     }},
    {"Effect in phases", kFrame, true,
     [](FakeJni& jni, jobject in, jobject) {
       return runEffect<kWidth - 1, kHeight - 1>(jni.env(), in, "PrettyBlue");
     }},
    {"Effect with a picture", kFrame, true,
     [](FakeJni& jni, jobject in, jobject) {
       return runEffect<kWidth, kHeight>(jni.env(), in, "PrettyJapan");
     },
     true},
    {"Effect with a picture in phases", kFrame, true,
     [](FakeJni& jni, jobject in, jobject) {
       return runEffect<kWidth - 1, kHeight>(jni.env(), in, "PrettyJapan");
     },
     true},
    {"SFBProcess", kFrame, true,
     [](FakeJni& jni, jobject in, jobject) {
       SFB(jni.env(), nullptr, in, kWidth, kHeight, 1, 2, 3);
       return jobject{};
     }},
};

inline Bytes resultOf(const Call& call, FakeJni& jni, Bytes input) {
  Bytes other = noise(kFrame, 2);
  FakeBuffer in{input.data(), jlong(input.size())}, out{other.data(), kFrame};
  const jobject result = call.run(jni, in, out);
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
    std::filesystem::create_directories(root() + "/system/lib64");
    std::filesystem::copy_file(engine, root() + "/system/lib64/libSFB.so");
  }
};
