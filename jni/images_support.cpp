#include "jni/images_support.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace alg {

void ImagesCall::raise(const char* className, const char* message) const {
  auto* const type = env_->FindClass(className);
  if (type != nullptr) {  // else there is another exception already
    env_->ThrowNew(type, message);
    env_->DeleteLocalRef(type);
  }
}

void ImagesCall::refuse(const char* format, ...) const {
  char message[300];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  raise("java/lang/IllegalArgumentException", message);
}

void ImagesCall::throwNoMemory() const {
  raise("java/lang/OutOfMemoryError", "no native memory for the work on this image");
}

void ImagesCall::finish(JobOutcome outcome) const {
  if (outcome == JobOutcome::kNoMemory) {
    throwNoMemory();
  } else if (outcome == JobOutcome::kCancelled) {
    raise("java/util/concurrent/CancellationException", "cancelled; some bands are done");
  }
}

uint8_t* ImagesCall::memory(jobject buffer) const {
  return static_cast<uint8_t*>(env_->GetDirectBufferAddress(buffer));
}

Image ImagesCall::image(jobject buffer, jintArray shape) const {
  jint values[4] = {};
  env_->GetIntArrayRegion(shape, 0, 4, values);
  const auto& [width, height, stride, redFirst] = values;
  return {memory(buffer), width, height, stride, redFirst != 0};
}

FrameImage ImagesCall::frame(jobject buffer, jintArray shape) const {
  jint values[6] = {};
  env_->GetIntArrayRegion(shape, 0, 6, values);
  const auto& [width, height, stride, offset, chromaStride, vFirst] = values;
  uint8_t* const luma = memory(buffer);
  return {luma, luma + offset, width, height, stride, chromaStride, vFirst != 0};
}

bool ImagesCall::areApart(const Argument& written, std::span<const Argument> others) const {
  for (const Argument& other : others) {
    if (written.begin < other.end && other.begin < written.end) {
      refuse("%s and %s share %lld bytes of memory, but must share none", written.name, other.name,
             static_cast<long long>(std::min(written.end, other.end) -
                                    std::max(written.begin, other.begin)));
      return false;
    }
  }
  return true;
}

Argument argumentOf(const char* name, const Image& image) {
  return {name, image.pixels, image.row(image.height - 1) + image.rowBytes()};
}

Argument argumentOf(const char* name, const FrameImage& frame) {
  return {name, frame.luma,
          frame.chroma + (frame.height / 2 - 1) * frame.chromaStride + frame.width};
}

bool areSame(const Image& a, const Image& b) {
  return a.pixels == b.pixels && a.width == b.width && a.height == b.height && a.stride == b.stride;
}

}  // namespace alg
