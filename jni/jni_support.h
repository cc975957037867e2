// What every native method needs at the Java border: its log lines, checked sizes and buffers, and
// results for Java. All input from Java is checked here; each failed check logs one error line.
//
// Natives call only those functions of the JNI environment that they can't do without: buffers'
// addresses and capacities, new direct buffers, characters of strings, new byte arrays and their
// elements, and SetIntArrayRegion. They check for an exception only after one of these has returned
// null.
#pragma once

#include <jni.h>

#include <cstdint>
#include <optional>

#include "base/block.h"

namespace alg {

/// The log scope of one call: "<signature> E" now, "<signature> X" at the end, and error lines in
/// between, all at priority 6.
class CallScope {
 public:
  CallScope(const char* tag, const char* signature);
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  /// Logs "<signature> <reason>", the reason formatted as by printf. Allocates nothing.
  [[gnu::format(printf, 2, 3)]] void fail(const char* format, ...) const;

 private:
  const char* tag;
  const char* signature;
};

/// Sizes from Java that have passed the checks.
struct ImageSize {
  int width;
  int height;
  int64_t yuvBytes;   ///< floor(3 x width x height / 2)
  int64_t argbBytes;  ///< 4 x width x height
};

/// Empty, with an error line, when a side is below 1 or there are more than 2^31 - 1 pixels.
std::optional<ImageSize> checkSize(const CallScope& call, jint width, jint height);

/// The same for a frame, whose sides must also be even.
std::optional<ImageSize> checkEvenSize(const CallScope& call, jint width, jint height);

/// A direct buffer's memory.
struct BufferMemory {
  uint8_t* address;
  int64_t capacity;
};

/// Empty when the buffer is null or not direct. Logs nothing.
std::optional<BufferMemory> directMemory(JNIEnv* env, jobject buffer);

/// Empty, with an error line that names the buffer's role, when it is null, not direct or holds
/// fewer than `needed` bytes.
std::optional<BufferMemory> checkBuffer(const CallScope& call, JNIEnv* env, jobject buffer,
                                        const char* role, int64_t needed);

/// A block for a result of `bytes` bytes, in large pages where they pay; null, with an error line,
/// when memory is short or the result is too large for a Java buffer.
Block allocateResult(const CallScope& call, int64_t bytes);

/// Passes a block to Java as a direct buffer; its memory then stays allocated for the life of the
/// process. Null, with an error line, when Java can't take it (the block is then freed).
jobject toDirectBuffer(const CallScope& call, JNIEnv* env, Block block, int64_t bytes);

/// Copies bytes into a new Java array; null, with an error line, when Java has no room.
jbyteArray toByteArray(const CallScope& call, JNIEnv* env, const uint8_t* bytes, int64_t size);

/// The characters of a Java string, for the lifetime of this object.
class StringChars {
 public:
  /// Logs an error line when the string is null or its characters can't be read; get() is then
  /// null.
  StringChars(const CallScope& call, JNIEnv* env, jstring string, const char* role);
  ~StringChars();
  StringChars(const StringChars&) = delete;
  StringChars& operator=(const StringChars&) = delete;
  const char* get() const { return chars; }

 private:
  JNIEnv* env;
  jstring string;
  const char* chars = nullptr;
};

}  // namespace alg
