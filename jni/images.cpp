// The natives of com.orvik.camera.common.Native.Images, without JPEG.
#include <jni.h>

#include "effect/pipeline.h"
#include "images/frames.h"
#include "images/geometry.h"
#include "images/job_pictures.h"
#include "jni/images_job.h"
#include "jni/images_support.h"
#include "libalgorithm/export.h"

namespace {

using alg::FrameImage, alg::Image, alg::ImagesCall, alg::Turn;

Turn turnOf(jint degrees) { return static_cast<Turn>(degrees / 90); }

/// The pipeline on an NV21 frame; the device's pictures are taken where the job has none.
void runOnPipeline(const ImagesCall& call, const alg::Job& job, const FrameImage& frame) {
  const alg::JobPictures pictures(job);
  if (!pictures.ready()) {
    return call.throwNoMemory();
  }
  const bool has = !job.operation->pictures.empty() &&
                   (!job.operation->pictures[0].read || job.pictures[0].pixels != nullptr);
  constexpr alg::PictureView kUnread{nullptr, 1, 16};
  const alg::PictureView picture = job.pictures[0].pixels != nullptr ? pictures[0] : kUnread;
  const auto outcome =
      alg::runEffect({.operation = job.operation,
                      .picture = has ? &picture : nullptr,
                      .truePadding = true,
                      .needsPicture = true},
                     {frame.luma, frame.chroma, frame.width, frame.height,
                      static_cast<int>(frame.lumaStride), static_cast<int>(frame.chromaStride)});
  if (outcome == alg::Outcome::kNoMemory) {
    call.throwNoMemory();
  } else if (outcome == alg::Outcome::kNoPicture && has) {
    call.refuse("%s has %d rows, but must have at least %d", job.operation->pictures[0].name,
                picture.height, job.operation->pipeline.strips);
  } else if (outcome == alg::Outcome::kNoPicture) {
    call.refuse("settings have no picture %s, and the device has none that can be used",
                job.operation->pictures[0].name);
  }
}

}  // namespace

extern "C" {

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_run(
    JNIEnv* env, jclass, jstring operation, jobject srcBuffer, jintArray srcShape,
    jobject dstBuffer, jintArray dstShape, jdouble amount, jdoubleArray values,
    jobjectArray pictures, jintArray pictureShapes, jobject cancellation) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape), dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src), written = argumentOf("dst", dst);
  alg::Job job;
  if ((!areSame(src, dst) && !call.areApart(written, {&source, 1})) ||
      !readJob(call, {operation, amount, values, pictures, pictureShapes, cancellation}, job) ||
      !fits(call, job, written, src.width, src.height)) {
    return;
  }
  call.finish(runJob(job, src, dst));
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_runOnFrame(
    JNIEnv* env, jclass, jstring operation, jboolean onPipeline, jobject buffer, jintArray shape,
    jdouble amount, jdoubleArray values, jobjectArray pictures, jintArray pictureShapes,
    jobject cancellation) {
  const ImagesCall call(env);
  const FrameImage frame = call.frame(buffer, shape);
  alg::Job job;
  if (!readJob(call, {operation, amount, values, pictures, pictureShapes, cancellation}, job) ||
      !fits(call, job, argumentOf("frame", frame), frame.width, frame.height)) {
    return;
  }
  if (onPipeline == JNI_FALSE) {
    call.finish(runJob(job, frame));
  } else if (isCancelled(job)) {
    call.finish(alg::JobOutcome::kCancelled);
  } else {
    runOnPipeline(call, job, frame);
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_decode(JNIEnv* env, jclass,
                                                                     jobject srcBuffer,
                                                                     jintArray srcShape,
                                                                     jobject dstBuffer,
                                                                     jintArray dstShape) {
  const ImagesCall call(env);
  const FrameImage src = call.frame(srcBuffer, srcShape);
  const Image dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (call.areApart(argumentOf("dst", dst), {&source, 1})) {
    decodeToImage(src, dst);
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_encode(JNIEnv* env, jclass,
                                                                     jobject srcBuffer,
                                                                     jintArray srcShape,
                                                                     jobject dstBuffer,
                                                                     jintArray dstShape) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape);
  const FrameImage dst = call.frame(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (call.areApart(argumentOf("dst", dst), {&source, 1})) {
    encodeFromImage(src, dst);
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_pack(
    JNIEnv* env, jclass, jobject y, jobject u, jobject v, jintArray strides, jint width,
    jint height, jintArray crop, jint degrees, jobject dstBuffer, jintArray dstShape) {
  const ImagesCall call(env);
  jint stride[6] = {}, area[4] = {};
  env->GetIntArrayRegion(strides, 0, 6, stride);
  env->GetIntArrayRegion(crop, 0, 4, area);
  const alg::CameraPlanes planes{{call.memory(y), stride[0], stride[1]},
                                 {call.memory(u), stride[2], stride[3]},
                                 {call.memory(v), stride[4], stride[5]}};
  const auto argument = [](const char* name, const alg::SamplePlane& plane, int count, int rows) {
    return alg::Argument{name, plane.samples, plane.from(count - 1, rows - 1).samples + 1};
  };
  const alg::Argument sources[] = {argument("y", planes.y, width, height),
                                   argument("u", planes.u, width / 2, height / 2),
                                   argument("v", planes.v, width / 2, height / 2)};
  const FrameImage dst = call.frame(dstBuffer, dstShape);
  if (!call.areApart(argumentOf("dst", dst), sources)) {
    return;
  }
  const auto& [left, top, columns, rows] = area;
  const alg::CameraPlanes part{planes.y.from(left, top), planes.u.from(left / 2, top / 2),
                               planes.v.from(left / 2, top / 2)};
  if (!packFrame(part, turnOf(degrees), dst)) {
    call.throwNoMemory();
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_rotatePixels(
    JNIEnv* env, jclass, jobject srcBuffer, jintArray srcShape, jint degrees, jobject dstBuffer,
    jintArray dstShape) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape), dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (call.areApart(argumentOf("dst", dst), {&source, 1}) &&
      !turnImage(src, turnOf(degrees), dst)) {
    call.throwNoMemory();
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_rotateFrame(
    JNIEnv* env, jclass, jobject srcBuffer, jintArray srcShape, jint degrees, jobject dstBuffer,
    jintArray dstShape) {
  const ImagesCall call(env);
  const FrameImage src = call.frame(srcBuffer, srcShape), dst = call.frame(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (call.areApart(argumentOf("dst", dst), {&source, 1}) &&
      !packFrame(alg::planesOf(src), turnOf(degrees), dst)) {
    call.throwNoMemory();
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_resize(JNIEnv* env, jclass,
                                                                     jobject srcBuffer,
                                                                     jintArray srcShape,
                                                                     jobject dstBuffer,
                                                                     jintArray dstShape) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape), dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (call.areApart(argumentOf("dst", dst), {&source, 1}) && !resizeImage(src, dst)) {
    call.throwNoMemory();
  }
}

ALGORITHM_API void Java_com_orvik_camera_common_Native_Images_paste(
    JNIEnv* env, jclass, jobject srcBuffer, jintArray srcShape, jobject dstBuffer,
    jintArray dstShape, jint left, jint top, jint width, jint height) {
  const ImagesCall call(env);
  const Image src = call.image(srcBuffer, srcShape), dst = call.image(dstBuffer, dstShape);
  const alg::Argument source = argumentOf("src", src);
  if (areSame(src, dst) || call.areApart(argumentOf("dst", dst), {&source, 1})) {
    pasteArea(src, dst, left, top, width, height);
  }
}

}  // extern "C"
