// The natives of com.orvik.camera.common.Native.Images for JPEG.
#include <jni.h>

#include <algorithm>
#include <optional>
#include <span>

#include "images/jpeg_job.h"
#include "jni/images_job.h"
#include "jni/images_support.h"
#include "libalgorithm/export.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"

namespace {

using alg::Image, alg::ImagesCall, alg::JpegFault;

/// A direct buffer as a span.
std::span<uint8_t> spanOf(const ImagesCall& call, jobject buffer) {
  return {call.memory(buffer),
          static_cast<std::size_t>(call.env()->GetDirectBufferCapacity(buffer))};
}

alg::Argument argumentOf(const char* name, std::span<const uint8_t> memory) {
  return {name, memory.data(), memory.data() + memory.size()};
}

alg::JpegPixels pixelsOf(const Image& image) {
  return image.redFirst ? alg::JpegPixels::kRgba : alg::JpegPixels::kBgra;
}

/// Why a file can't be decoded.
const char* whyNot(JpegFault fault) {
  switch (fault) {
    case JpegFault::kNotJpeg:
      return "is no JPEG";
    case JpegFault::kDamaged:
      return "is damaged: no part of its image is there";
    case JpegFault::kUnsupported:
      return "is a JPEG of a kind that is not supported";
    case JpegFault::kTooLarge:
      return "has an image of more than 256 million pixels or 65535 a side";
    case JpegFault::kTooComplex:
      return "takes more scans or memory to decode than any but a hostile file does";
    default:
      return "can't be decoded";
  }
}

/// Throws what a fault of the decoder stands for.
void refuseFile(const ImagesCall& call, JpegFault fault) {
  if (fault == JpegFault::kNoMemory) {
    call.throwNoMemory();
  } else {
    call.refuse("file %s", whyNot(fault));
  }
}

/// Throws what a fault of the encoder stands for.
/// @param needed  the file's bytes, if they are known
void refuseResult(const ImagesCall& call, JpegFault fault, int width, int height,
                  std::size_t capacity, std::size_t needed) {
  if (fault == JpegFault::kOutputFull) {
    call.refuse("dst has %zu bytes, but the file takes %zu", capacity, needed);
  } else if (fault == JpegFault::kBadSize) {
    call.refuse("the image has %dx%d pixels, but no side of a JPEG may pass %d", width, height,
                alg::kMostJpegSide);
  } else {
    call.throwNoMemory();
  }
}

/// Java's sink, which takes a file from a buffer piece by piece.
class Sink final : public alg::JpegOutput {
 public:
  Sink(JNIEnv* env, jobject sink, std::span<uint8_t> buffer)
      : env_(env), sink_(sink), buffer_(buffer) {
    auto* const type = env->FindClass("java/util/function/IntConsumer");
    accept_ = type != nullptr ? env->GetMethodID(type, "accept", "(I)V") : nullptr;
    env->DeleteLocalRef(type);
  }

  bool ready() const { return accept_ != nullptr; }
  std::span<uint8_t> room() override { return buffer_; }
  bool take(std::size_t bytes) override {
    env_->CallVoidMethod(sink_, accept_, static_cast<jint>(bytes));
    return env_->ExceptionCheck() == JNI_FALSE;
  }

 private:
  JNIEnv* env_;
  jobject sink_;
  std::span<uint8_t> buffer_;
  jmethodID accept_ = nullptr;
};

/// Reads a file's header; false when it has thrown.
bool readInfo(const ImagesCall& call, std::span<const uint8_t> file, alg::JpegInfo& info) {
  alg::JpegBytes input(file);
  const JpegFault fault = readJpegInfo(input, info);
  if (fault != JpegFault::kNone) {
    refuseFile(call, fault);
  }
  return fault == JpegFault::kNone;
}

/// Runs a job on a file; throws if that fails.
void transcode(const ImagesCall& call, const alg::Job& job, std::span<const uint8_t> file,
               int quality, std::span<uint8_t> dst, jobject sink, std::size_t& size) {
  alg::JpegInfo info;
  if (!readInfo(call, file, info) ||
      !fits(call, job, argumentOf("dst", dst), info.width, info.height)) {
    return;
  }
  if (std::max(info.width, info.height) > alg::kMostJpegSide) {
    return refuseResult(call, JpegFault::kBadSize, info.width, info.height, 0, 0);
  }
  alg::JpegBuffer buffer(dst);
  std::optional<Sink> pieces;
  if (sink != nullptr && !pieces.emplace(call.env(), sink, dst).ready()) {
    return;
  }
  alg::JpegOutput& output = sink != nullptr ? static_cast<alg::JpegOutput&>(*pieces) : buffer;
  const JpegFault fault = runJobOnJpeg(job, file, info, output, quality);
  size = buffer.size();
  if (fault == JpegFault::kCancelled) {
    call.finish(alg::JobOutcome::kCancelled);
  } else if (fault == JpegFault::kOutputFull) {
    refuseResult(call, fault, info.width, info.height, dst.size(), size);
  } else if (fault != JpegFault::kNone && !call.failed()) {
    refuseFile(call, fault);
  }
}

}  // namespace

extern "C" {

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_jpegSize(JNIEnv* env, jclass,
                                                                       jobject file,
                                                                       jintArray size) {
  const ImagesCall call(env);
  alg::JpegInfo info;
  if (readInfo(call, spanOf(call, file), info)) {
    const jint sides[2] = {info.width, info.height};
    env->SetIntArrayRegion(size, 0, 2, sides);
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_decodeJpeg(JNIEnv* env, jclass,
                                                                         jobject fileBuffer,
                                                                         jint reduction,
                                                                         jobject dstBuffer,
                                                                         jintArray dstShape) {
  const ImagesCall call(env);
  const auto file = spanOf(call, fileBuffer);
  const Image dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("file", file);
  if (!call.areApart(argumentOf("dst", dst), {&source, 1})) {
    return;
  }
  alg::JpegBytes input(file);
  alg::JpegReader reader(input);
  if (reader.fault() == JpegFault::kNone) {
    const int width = reader.info().reducedWidth(reduction);
    const int height = reader.info().reducedHeight(reduction);
    if (dst.width != width || dst.height != height) {
      return call.refuse("dst has %dx%d pixels, but %dx%d are needed", dst.width, dst.height, width,
                         height);
    }
  }
  reader.start({.pixels = pixelsOf(dst), .reduction = reduction});
  reader.read(dst.pixels, static_cast<std::size_t>(dst.stride), dst.height);
  if (reader.fault() != JpegFault::kNone) {
    refuseFile(call, reader.fault());
  }
}

ALGORITHM_API jint Java_com_orvik_camera_common_Native_Images_encodeJpeg(
    JNIEnv* env, jclass, jobject srcBuffer, jintArray srcShape, jint quality, jobject dstBuffer) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape);
  const auto dst = spanOf(call, dstBuffer);
  const alg::Argument source = argumentOf("src", src);
  if (!call.areApart(argumentOf("dst", dst), {&source, 1})) {
    return 0;
  }
  alg::JpegBuffer output(dst);
  alg::JpegWriter writer(output);
  writer.start(
      {.width = src.width, .height = src.height, .pixels = pixelsOf(src), .quality = quality});
  writer.write(src.pixels, static_cast<std::size_t>(src.stride), src.height);
  if (writer.finish() != JpegFault::kNone) {
    refuseResult(call, writer.fault(), src.width, src.height, dst.size(), output.size());
  }
  return static_cast<jint>(output.size());
}

ALGORITHM_API jint Java_com_orvik_camera_common_Native_Images_applyToJpeg(
    JNIEnv* env, jclass, jstring operation, jdouble amount, jdoubleArray values,
    jobjectArray pictures, jintArray pictureShapes, jobject cancellation, jobject fileBuffer,
    jint quality, jobject dstBuffer, jobject sink) {
  const ImagesCall call(env);
  const auto file = spanOf(call, fileBuffer), dst = spanOf(call, dstBuffer);
  const alg::Argument source = argumentOf("file", file);
  alg::Job job;
  std::size_t size = 0;
  if (call.areApart(argumentOf("dst", dst), {&source, 1}) &&
      readJob(call, {operation, amount, values, pictures, pictureShapes, cancellation}, job)) {
    transcode(call, job, file, quality, dst, sink, size);
  }
  return static_cast<jint>(size);
}

}  // extern "C"
