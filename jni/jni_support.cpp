#include "jni/jni_support.h"

#include <android/log.h>

#include <limits>
#include <utility>

#include "base/image_size.h"

namespace alg {
namespace {

constexpr int64_t kJavaLimit = std::numeric_limits<jint>::max();

std::string sizeText(jint width, jint height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

/// Drops what Java would throw when the native method returns: failures are logged, never thrown.
void dropException(JNIEnv* env) {
  if (env->ExceptionCheck() != JNI_FALSE) {
    env->ExceptionClear();
  }
}

}  // namespace

CallScope::CallScope(const char* callTag, const char* callSignature)
    : tag(callTag), signature(callSignature) {
  __android_log_print(ANDROID_LOG_ERROR, tag, "%s E", signature);
}

CallScope::~CallScope() { __android_log_print(ANDROID_LOG_ERROR, tag, "%s X", signature); }

void CallScope::fail(const std::string& reason) const {
  __android_log_print(ANDROID_LOG_ERROR, tag, "%s %s", signature, reason.c_str());
}

std::optional<ImageSize> checkSize(const CallScope& call, jint width, jint height) {
  if (width < 1 || height < 1) {
    call.fail("refused: the size " + sizeText(width, height) + " is not positive");
    return std::nullopt;
  }
  const int64_t pixels = int64_t{width} * height;
  if (pixels > kJavaLimit) {
    call.fail("refused: the size " + sizeText(width, height) + " is too large");
    return std::nullopt;
  }
  return ImageSize{width, height, yuvFrameBytes(width, height), kArgbBytes * pixels};
}

std::optional<BufferMemory> checkBuffer(const CallScope& call, JNIEnv* env, jobject buffer,
                                        const char* role, int64_t needed) {
  const std::string name = std::string("refused: the ") + role + " buffer ";
  if (buffer == nullptr) {
    call.fail(name + "is null");
    return std::nullopt;
  }
  const int64_t capacity = env->GetDirectBufferCapacity(buffer);
  auto* const address = static_cast<uint8_t*>(env->GetDirectBufferAddress(buffer));
  if (capacity < 0 || address == nullptr) {
    call.fail(name + "is not a direct buffer");
    return std::nullopt;
  }
  if (capacity < needed) {
    call.fail(name + "holds " + std::to_string(capacity) + " bytes, needed are " +
              std::to_string(needed));
    return std::nullopt;
  }
  return BufferMemory{address, capacity};
}

Block allocateResult(const CallScope& call, int64_t bytes) {
  Block block = bytes > kJavaLimit ? nullptr : allocateBlock(static_cast<std::size_t>(bytes));
  if (!block) {
    call.fail("failed: no memory for a result of " + std::to_string(bytes) + " bytes");
  }
  return block;
}

jobject toDirectBuffer(const CallScope& call, JNIEnv* env, Block block, int64_t bytes) {
  jobject buffer = env->NewDirectByteBuffer(block.get(), bytes);
  dropException(env);
  if (buffer == nullptr) {
    call.fail("failed: Java has no room for the result");
    return nullptr;
  }
  static_cast<void>(block.release());
  return buffer;
}

jbyteArray toByteArray(const CallScope& call, JNIEnv* env, const uint8_t* bytes, int64_t size) {
  jbyteArray array = env->NewByteArray(static_cast<jsize>(size));
  dropException(env);
  if (array == nullptr) {
    call.fail("failed: Java has no room for the result");
    return nullptr;
  }
  env->SetByteArrayRegion(array, 0, static_cast<jsize>(size),
                          reinterpret_cast<const jbyte*>(bytes));
  return array;
}

StringChars::StringChars(const CallScope& call, JNIEnv* javaEnv, jstring javaString,
                         const char* role)
    : env(javaEnv), string(javaString) {
  if (string != nullptr) {
    chars = env->GetStringUTFChars(string, nullptr);
    dropException(env);
  }
  if (chars == nullptr) {
    call.fail(std::string("refused: the ") + role +
              (string == nullptr ? " is null" : " can't be read"));
  }
}

StringChars::~StringChars() {
  if (chars != nullptr) {
    env->ReleaseStringUTFChars(string, chars);
  }
}

}  // namespace alg
