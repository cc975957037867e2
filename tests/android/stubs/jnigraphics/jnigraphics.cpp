// Stands in for libjnigraphics, over the stand-in for Bitmap. A lock gives a copy of the pixels
// between guards, at another address each time and freed with the last unlock, so that whoever
// writes beside them, keeps them or keeps a lock is found. Misuse ends the process.
#include <android/bitmap.h>
#include <jni.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#define EXPORTED __attribute__((visibility("default")))

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int kGuard = 0;  // it sees reads, too
#else
constexpr int kGuard = 64;
#endif
constexpr int kGuardByte = 0xA5;
int openLocks = 0;  // tests use one thread
int allLocks = 0;

void require(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "FATAL ERROR in libjnigraphics: %s\n", what);
    std::abort();
  }
}

/// The fields of a Bitmap.
class Bitmap {
 public:
  Bitmap(JNIEnv* javaEnv, jobject object) : env(javaEnv), bitmap(object) {
    require(env->ExceptionCheck() == JNI_FALSE, "called with a pending exception");
    require(bitmap != nullptr && env->GetBooleanField(bitmap, id("recycled", "Z")) == JNI_FALSE,
            "called with null or a recycled bitmap");
  }

  jint number(const char* name) const { return env->GetIntField(bitmap, id(name, "I")); }
  void set(const char* name, jint value) const { env->SetIntField(bitmap, id(name, "I"), value); }
  char* locked() const {
    return std::bit_cast<char*>(env->GetLongField(bitmap, id("locked", "J")));
  }
  void setLocked(char* pixels) const {
    env->SetLongField(bitmap, id("locked", "J"), reinterpret_cast<jlong>(pixels));
  }
  jbyteArray pixels() const {
    return static_cast<jbyteArray>(env->GetObjectField(bitmap, id("pixels", "[B")));
  }

  /// What that function is to fail with, or to say; nothing when it is to do its work.
  std::optional<jint> planted(const char* function) const {
    auto* const name =
        static_cast<jstring>(env->GetObjectField(bitmap, id("failing", "Ljava/lang/String;")));
    const char* const chars = env->GetStringUTFChars(name, nullptr);
    const bool same = std::strcmp(chars, function) == 0;
    env->ReleaseStringUTFChars(name, chars);
    if (!same) {
      return std::nullopt;
    }
    const jint result = number("result");
    if (result == ANDROID_BITMAP_RESULT_JNI_EXCEPTION) {
      env->ThrowNew(env->FindClass("java/lang/ArithmeticException"), function);
    }
    return result;
  }

 private:
  jfieldID id(const char* name, const char* type) const {
    return env->GetFieldID(env->GetObjectClass(bitmap), name, type);
  }

  JNIEnv* env;
  jobject bitmap;
};

}  // namespace

EXPORTED int AndroidBitmap_getInfo(JNIEnv* env, jobject object, AndroidBitmapInfo* info) {
  const Bitmap bitmap(env, object);
  if (const auto failure = bitmap.planted("getInfo")) {
    return *failure;
  }
  info->width = static_cast<uint32_t>(bitmap.number("width"));
  info->height = static_cast<uint32_t>(bitmap.number("height"));
  info->stride =
      static_cast<uint32_t>(bitmap.planted("stride").value_or(bitmap.number("rowBytes")));
  info->format = bitmap.planted("format").value_or(ANDROID_BITMAP_FORMAT_RGBA_8888);
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

EXPORTED int AndroidBitmap_lockPixels(JNIEnv* env, jobject object, void** address) {
  const Bitmap bitmap(env, object);
  if (const auto failure = bitmap.planted("lockPixels")) {
    return *failure;
  }
  if (bitmap.number("locks") == 0) {
    const jsize size = env->GetArrayLength(bitmap.pixels());
    auto* const block =
        static_cast<char*>(std::malloc(static_cast<std::size_t>(size) + 2 * kGuard));
    require(block != nullptr, "no memory");
    std::memset(block, kGuardByte, static_cast<std::size_t>(size) + 2 * kGuard);
    env->GetByteArrayRegion(bitmap.pixels(), 0, size, reinterpret_cast<jbyte*>(block + kGuard));
    bitmap.setLocked(block);
  }
  bitmap.set("locks", bitmap.number("locks") + 1);
  *address = bitmap.locked() + kGuard;
  ++openLocks;
  ++allLocks;
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

EXPORTED int AndroidBitmap_unlockPixels(JNIEnv* env, jobject object) {
  const Bitmap bitmap(env, object);
  require(bitmap.number("locks") > 0, "unlocked more often than locked");
  bitmap.set("locks", bitmap.number("locks") - 1);
  --openLocks;
  if (bitmap.number("locks") == 0) {
    const jsize size = env->GetArrayLength(bitmap.pixels());
    char* const block = bitmap.locked();
    const std::string guard(kGuard, static_cast<char>(kGuardByte));
    require(std::memcmp(block, guard.data(), kGuard) == 0, "written before the pixels");
    require(std::memcmp(block + kGuard + size, guard.data(), kGuard) == 0,
            "written behind the pixels");
    env->SetByteArrayRegion(bitmap.pixels(), 0, size, reinterpret_cast<jbyte*>(block + kGuard));
    std::free(block);
  }
  return bitmap.planted("unlockPixels").value_or(ANDROID_BITMAP_RESULT_SUCCESS);
}

extern "C" EXPORTED JNIEXPORT jint JNICALL Java_android_graphics_BitmapControl_openLocks(JNIEnv*,
                                                                                         jclass) {
  return openLocks;
}

extern "C" EXPORTED JNIEXPORT jint JNICALL Java_android_graphics_BitmapControl_locks(JNIEnv*,
                                                                                     jclass) {
  return allLocks;
}
