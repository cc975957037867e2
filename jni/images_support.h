// What the natives of com.orvik.camera.common.Native.Images need at the Java border. Java has
// checked all that needs no address: sizes, strides and capacities, ranges, names, and that buffers
// are direct. Here the rest is refused: shared memory, and what the library finds out on its way.
// What is wrong is thrown; nothing is logged.
#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "images/image.h"
#include "images/job.h"

namespace alg {

/// Memory of an argument.
struct Argument {
  const char* name;
  const uint8_t* begin;
  const uint8_t* end;
};

/// One call of a native. After one of its throwing functions, or when failed(), the native returns.
class ImagesCall {
 public:
  explicit ImagesCall(JNIEnv* env) : env_(env) {}

  JNIEnv* env() const { return env_; }
  /// Whether an exception is pending.
  bool failed() const { return env_->ExceptionCheck() != JNI_FALSE; }

  /// Throws an IllegalArgumentException with a message formatted as by printf.
  [[gnu::format(printf, 2, 3)]] void refuse(const char* format, ...) const;
  void throwNoMemory() const;
  /// Throws what an outcome stands for, if it is not kDone.
  void finish(JobOutcome outcome) const;

  uint8_t* memory(jobject buffer) const;
  /// What Java's Pixels.shape() and Frame.shape() have.
  Image image(jobject buffer, jintArray shape) const;
  FrameImage frame(jobject buffer, jintArray shape) const;

  /// Throws if `written` shares memory with one of the others.
  bool areApart(const Argument& written, std::span<const Argument> others) const;

 private:
  void raise(const char* className, const char* message) const;

  JNIEnv* env_;
};

Argument argumentOf(const char* name, const Image& image);
Argument argumentOf(const char* name, const FrameImage& frame);

/// Whether both are the same pixels, in whatever order.
bool areSame(const Image& a, const Image& b);

}  // namespace alg
