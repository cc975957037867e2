// A stand-in for the virtual machine: as much of a JNIEnv as the natives use. And the natives.
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

/// What a native made for Java, and what it threw. One for each thread.
class FakeJni {
 public:
  FakeJni() {
    table_.ExceptionCheck = [](JNIEnv* env) { return of(env).thrown_; };
    table_.ExceptionClear = [](JNIEnv* env) { of(env).thrown_ = JNI_FALSE; };
    table_.GetDirectBufferAddress = [](JNIEnv*, jobject buffer) {
      return static_cast<void*>(reinterpret_cast<FakeBuffer*>(buffer)->address);
    };
    table_.GetDirectBufferCapacity = [](JNIEnv*, jobject buffer) {
      const auto& fake = *reinterpret_cast<FakeBuffer*>(buffer);
      return fake.address == nullptr ? jlong{-1} : fake.capacity;
    };
    table_.NewDirectByteBuffer = [](JNIEnv* env, void* address, jlong capacity) {
      return of(env).make({static_cast<uint8_t*>(address), capacity});
    };
    table_.NewByteArray = [](JNIEnv* env, jsize size) {
      FakeJni& jni = of(env);
      jni.array_ = {static_cast<uint8_t*>(std::malloc(std::size_t(size))), size};
      return jni.array_.address == nullptr
                 ? jni.fail<jbyteArray>()
                 : reinterpret_cast<jbyteArray>(static_cast<jobject>(jni.array_));
    };
    table_.SetByteArrayRegion = [](JNIEnv* env, jbyteArray, jsize at, jsize count,
                                   const jbyte* bytes) {
      std::copy_n(bytes, count, of(env).array_.address + at);
    };
    table_.GetArrayLength = [](JNIEnv*, jarray) { return jsize{2}; };
    table_.SetIntArrayRegion = [](JNIEnv*, jintArray array, jsize at, jsize count,
                                  const jint* values) {
      std::copy_n(values, count, reinterpret_cast<jint*>(array) + at);
    };
    table_.GetStringUTFChars = [](JNIEnv* env, jstring text, jboolean*) {
      const auto* chars = reinterpret_cast<const char*>(text);
      char* const copy = static_cast<char*>(std::malloc(std::strlen(chars) + 1));
      return copy == nullptr ? of(env).fail<const char*>() : std::strcpy(copy, chars);
    };
    table_.ReleaseStringUTFChars = [](JNIEnv*, jstring, const char* chars) {
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

 private:
  static FakeJni& of(JNIEnv* env) { return *reinterpret_cast<FakeJni*>(env); }

  jobject make(FakeBuffer made) {
    buffer_ = made;
    return buffer_;
  }
  template <class Result>
  Result fail() {
    thrown_ = JNI_TRUE;
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
