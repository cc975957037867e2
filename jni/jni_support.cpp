#include "jni/jni_support.h"

#include <android/log.h>

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

#include "base/image_size.h"
#include "platform/large_block.h"

namespace alg {
namespace {

constexpr int64_t kJavaLimit = std::numeric_limits<jint>::max();

/// For use after a JNI call has returned null: clears the pending exception, because failures are
/// logged, never thrown. An environment without these entries throws nothing.
void dropException(JNIEnv* env) {
  const auto& entries = *env->functions;
  if (entries.ExceptionCheck != nullptr && entries.ExceptionClear != nullptr &&
      env->ExceptionCheck() != JNI_FALSE) {
    env->ExceptionClear();
  }
}

void failWithoutRoom(const CallScope& call, JNIEnv* env) {
  dropException(env);
  call.fail("failed: Java has no room for the result");
}

}  // namespace

CallScope::CallScope(const char* callTag, const char* callSignature)
    : tag(callTag), signature(callSignature) {
  __android_log_print(ANDROID_LOG_ERROR, tag, "%s E", signature);
}

CallScope::~CallScope() { __android_log_print(ANDROID_LOG_ERROR, tag, "%s X", signature); }

void CallScope::fail(const char* format, ...) const {
  char reason[160];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(reason, sizeof reason, format, arguments);
  va_end(arguments);
  __android_log_print(ANDROID_LOG_ERROR, tag, "%s %s", signature, reason);
}

std::optional<ImageSize> checkSize(const CallScope& call, jint width, jint height) {
  if (width < 1 || height < 1) {
    call.fail("refused: the size %d x %d is not positive", width, height);
    return std::nullopt;
  }
  const int64_t pixels = int64_t{width} * height;
  if (pixels > kJavaLimit) {
    call.fail("refused: the size %d x %d is too large", width, height);
    return std::nullopt;
  }
  return ImageSize{width, height, yuvFrameBytes(width, height), kArgbBytes * pixels};
}

std::optional<ImageSize> checkEvenSize(const CallScope& call, jint width, jint height) {
  const auto size = checkSize(call, width, height);
  if (size && (width % 2 != 0 || height % 2 != 0)) {
    call.fail("refused: the size %d x %d is not even", width, height);
    return std::nullopt;
  }
  return size;
}

std::optional<BufferMemory> directMemory(JNIEnv* env, jobject buffer) {
  if (buffer == nullptr) {
    return std::nullopt;
  }
  const int64_t capacity = env->GetDirectBufferCapacity(buffer);
  auto* const address = static_cast<uint8_t*>(env->GetDirectBufferAddress(buffer));
  if (capacity < 0 || address == nullptr) {
    return std::nullopt;
  }
  return BufferMemory{address, capacity};
}

std::optional<BufferMemory> checkBuffer(const CallScope& call, JNIEnv* env, jobject buffer,
                                        const char* role, int64_t needed) {
  const auto memory = directMemory(env, buffer);
  if (!memory) {
    call.fail("refused: the %s buffer is %s", role, buffer == nullptr ? "null" : "not direct");
    return std::nullopt;
  }
  if (memory->capacity < needed) {
    call.fail("refused: the %s buffer holds %" PRId64 " bytes, needed are %" PRId64, role,
              memory->capacity, needed);
    return std::nullopt;
  }
  return memory;
}

Block allocateResult(const CallScope& call, int64_t bytes) {
  if (bytes > kJavaLimit) {
    call.fail("refused: a result of %" PRId64 " bytes is too large for Java", bytes);
    return nullptr;
  }
  Block block = allocateLargeBlock(static_cast<std::size_t>(bytes));
  if (!block) {
    call.fail("failed: no memory for a result of %" PRId64 " bytes", bytes);
  }
  return block;
}

jobject toDirectBuffer(const CallScope& call, JNIEnv* env, Block block, int64_t bytes) {
  jobject buffer = env->NewDirectByteBuffer(block.get(), bytes);
  if (buffer == nullptr) {
    failWithoutRoom(call, env);
    return nullptr;
  }
  static_cast<void>(block.release());
  return buffer;
}

jbyteArray toByteArray(const CallScope& call, JNIEnv* env, const uint8_t* bytes, int64_t size) {
  jbyteArray array = env->NewByteArray(static_cast<jsize>(size));
  jbyte* const elements = array == nullptr ? nullptr : env->GetByteArrayElements(array, nullptr);
  if (elements == nullptr) {
    failWithoutRoom(call, env);
    return nullptr;
  }
  std::memcpy(elements, bytes, static_cast<std::size_t>(size));
  constexpr jint kCopyBackAndFree = 0;
  env->ReleaseByteArrayElements(array, elements, kCopyBackAndFree);
  return array;
}

StringChars::StringChars(const CallScope& call, JNIEnv* javaEnv, jstring javaString,
                         const char* role)
    : env(javaEnv), string(javaString) {
  if (string != nullptr) {
    chars = env->GetStringUTFChars(string, nullptr);
  }
  if (chars == nullptr) {
    dropException(env);
    call.fail("refused: the %s %s", role, string == nullptr ? "is null" : "can't be read");
  }
}

StringChars::~StringChars() {
  if (chars != nullptr) {
    env->ReleaseStringUTFChars(string, chars);
  }
}

}  // namespace alg
