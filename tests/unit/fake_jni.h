// A stand-in for the virtual machine: of a JNIEnv the entries that natives may use where nothing is
// wrong. All others are null, but those for exceptions once there is one. And the natives.
#pragma once

#include <jni.h>

#include <vector>

#include "reference.h"

/// A direct buffer; with a null address one that is not direct.
struct FakeBuffer {
  uint8_t* address;
  jlong capacity;
  operator jobject() { return reinterpret_cast<jobject>(this); }
};

/// What a native asked of Java, what it made and what it threw. One for each thread.
class FakeJni {
 public:
  FakeJni() {
    table_.GetDirectBufferAddress = [](JNIEnv* env, jobject buffer) {
      of(env).note("Address");
      return static_cast<void*>(reinterpret_cast<FakeBuffer*>(buffer)->address);
    };
    table_.GetDirectBufferCapacity = [](JNIEnv* env, jobject buffer) {
      of(env).note("Capacity");
      const auto& fake = *reinterpret_cast<FakeBuffer*>(buffer);
      return fake.address == nullptr ? jlong{-1} : fake.capacity;
    };
    table_.NewDirectByteBuffer = [](JNIEnv* env, void* address, jlong capacity) {
      FakeJni& jni = of(env);
      if (jni.refuses("NewBuffer")) return jni.fail<jobject>();
      jni.buffer_ = {static_cast<uint8_t*>(address), capacity};
      return static_cast<jobject>(jni.buffer_);
    };
    table_.NewByteArray = [](JNIEnv* env, jsize size) {
      FakeJni& jni = of(env);
      if (jni.refuses("NewArray")) return jni.fail<jbyteArray>();
      jni.array_ = {static_cast<uint8_t*>(std::malloc(std::size_t(size))), size};
      return jni.array_.address == nullptr
                 ? jni.fail<jbyteArray>()
                 : reinterpret_cast<jbyteArray>(static_cast<jobject>(jni.array_));
    };
    table_.GetByteArrayElements = [](JNIEnv* env, jbyteArray, jboolean*) {  // a copy
      FakeJni& jni = of(env);
      void* const copy =
          jni.refuses("Elements") ? nullptr : std::malloc(std::size_t(jni.array_.capacity));
      return copy == nullptr ? jni.fail<jbyte*>() : static_cast<jbyte*>(copy);
    };
    table_.ReleaseByteArrayElements = [](JNIEnv* env, jbyteArray, jbyte* copy, jint mode) {
      FakeJni& jni = of(env);
      jni.note(mode == 0 ? "Release" : "Release otherwise");
      if (mode != JNI_ABORT) std::copy_n(copy, jni.array_.capacity, jni.array_.address);
      if (mode != JNI_COMMIT) std::free(copy);
    };
    table_.SetIntArrayRegion = [](JNIEnv* env, jintArray array, jsize at, jsize count,
                                  const jint* values) {
      of(env).note("Ints");
      std::copy_n(values, count, reinterpret_cast<jint*>(array) + at);
    };
    table_.GetStringUTFChars = [](JNIEnv* env, jstring text, jboolean*) {
      const auto* chars = reinterpret_cast<const char*>(text);
      void* const room = of(env).refuses("Chars") ? nullptr : std::malloc(std::strlen(chars) + 1);
      char* const copy = static_cast<char*>(room);
      return copy == nullptr ? of(env).fail<const char*>() : std::strcpy(copy, chars);
    };
    table_.ReleaseStringUTFChars = [](JNIEnv* env, jstring, const char* chars) {
      of(env).note("ReleaseChars");
      std::free(const_cast<char*>(chars));
    };
    env_.functions = &table_;
  }
  ~FakeJni() { drop(); }
  FakeJni(const FakeJni&) = delete;
  FakeJni& operator=(const FakeJni&) = delete;

  JNIEnv* env() { return &env_; }
  static jstring text(const char* chars) {
    return reinterpret_cast<jstring>(const_cast<char*>(chars));
  }
  /// The bytes of a result, empty for null; they are freed.
  Bytes take(jobject result) {
    Bytes bytes;
    if (result != nullptr) {
      const auto& made = *reinterpret_cast<FakeBuffer*>(result);
      bytes.assign(made.address, made.address + made.capacity);
    }
    drop();
    return bytes;
  }
  /// The same of a native that gets a direct buffer with these bytes, and numbers.
  template <class Native, class... Numbers>
  Bytes call(Native* native, Bytes input, Numbers... numbers) {
    FakeBuffer buffer{input.data(), jlong(input.size())};
    return take(native(&env_, nullptr, buffer, numbers...));
  }
  bool threw() const { return thrown_ != JNI_FALSE; }
  /// The calls since the last time, each with a space in front.
  std::string calls() {
    std::string all;
    for (int i = 0; i < called_; ++i) all += std::string(" ") + calls_[i];
    called_ = 0;
    return all;
  }
  /// From now on this call gives null; what it throws can be looked for, or can't.
  void refuse(const char* call, bool withException) {
    refused_ = call;
    throws_ = withException;
  }
  /// Lets arrays be asked for their length.
  void giveArrayLength() {
    table_.GetArrayLength = [](JNIEnv*, jarray array) { return *reinterpret_cast<jint*>(array); };
  }

 private:
  static FakeJni& of(JNIEnv* env) { return *reinterpret_cast<FakeJni*>(env); }

  /// Takes no memory: the tests of faults count that.
  void note(const char* call) {
    if (called_ < kMostCalls) calls_[called_++] = call;
  }
  bool refuses(const char* call) {
    note(call);
    return refused_ != nullptr && std::strcmp(refused_, call) == 0;
  }
  template <class Result>
  Result fail() {
    if (throws_) {
      thrown_ = JNI_TRUE;
      table_.ExceptionCheck = [](JNIEnv* env) { return of(env).thrown_; };
      table_.ExceptionClear = [](JNIEnv* env) { of(env).thrown_ = JNI_FALSE; };
    }
    return nullptr;
  }
  void drop() {
    for (FakeBuffer* made : {&buffer_, &array_}) {
      std::free(made->address);
      *made = {};
    }
  }

  JNIEnv env_{};  // first: a native's env is this object
  JNINativeInterface table_{};
  FakeBuffer buffer_{}, array_{};
  jboolean thrown_ = JNI_FALSE;
  static constexpr int kMostCalls = 16;
  const char* calls_[kMostCalls];
  int called_ = 0;
  const char* refused_ = nullptr;
  bool throws_ = true;
};

// The natives by short names.
#define NATIVE(result, name, symbol, ...)                                                       \
  extern "C" result Java_com_orvik_camera_common_Native_##symbol(JNIEnv*, jclass, __VA_ARGS__); \
  [[maybe_unused]] static constexpr auto* name = Java_com_orvik_camera_common_Native_##symbol
NATIVE(jobject, YUV2ARGB, YUVAlgorithm_YUV2ARGB, jobject, jint, jint);
NATIVE(jobject, YVU2ARGB, YUVAlgorithm_YVU2ARGB, jobject, jint, jint);
NATIVE(jobject, ARGB2YUV, YUVAlgorithm_ARGB2YUV, jobject, jint, jint);
NATIVE(jobject, ARGB2YVU, YUVAlgorithm_ARGB2YVU, jobject, jint, jint);
NATIVE(void, ROTATE, YUVAlgorithm_rotateYUV, jobject, jobject, jint, jint, jint);
NATIVE(jobject, JPEG2ARGB, CodecDataAlgorithm_JPEG2ARGB, jobject, jintArray);
NATIVE(jbyteArray, ARGB2JPEG, CodecDataAlgorithm_ARGB2JPEG, jobject, jint, jint, jint);
NATIVE(void, EFFECT, EffectAlgorithm_Effect, jobject, jint, jint, jstring);
NATIVE(void, SFB, SFBEngineAlgorithm_SFBProcess, jobject, jint, jint, jint, jint, jint);
#undef NATIVE
