#include "jni/images_job.h"

#include <cmath>

#include "catalogue/operations.h"

namespace alg {
namespace {

const Operation* operationOf(const ImagesCall& call, jstring javaName) {
  const char* const name = call.env()->GetStringUTFChars(javaName, nullptr);
  if (name == nullptr) {
    return nullptr;  // Java has thrown
  }
  const Operation* const operation = findOperation(name);
  if (operation == nullptr) {
    call.refuse("the native library, which is not the one of these classes, has no %s", name);
  }
  call.env()->ReleaseStringUTFChars(javaName, name);
  return operation;
}

}  // namespace

bool readJob(const ImagesCall& call, const JavaJob& from, Job& job) {
  JNIEnv* const env = call.env();
  job.operation = operationOf(call, from.operation);
  if (job.operation == nullptr) {
    return false;
  }
  job.weight = static_cast<int>(std::lround(from.amount * kWholeWeight));
  env->GetDoubleArrayRegion(from.values, 0, static_cast<jsize>(job.operation->parameters.size()),
                            job.values);
  jsize index = 0;
  for (const PictureRole& role : job.operation->pictures) {
    if (!role.read) {
      continue;
    }
    auto* const buffer = env->GetObjectArrayElement(from.pictures, index);
    if (buffer != nullptr) {
      jint shape[4] = {};
      env->GetIntArrayRegion(from.pictureShapes, 4 * index, 4, shape);
      job.pictures[&role - job.operation->pictures.data()] = {call.memory(buffer), shape[0],
                                                              shape[1], shape[2], shape[3] != 0};
      env->DeleteLocalRef(buffer);
    }
    ++index;
  }
  job.cancelled = from.cancellation != nullptr ? call.memory(from.cancellation) : nullptr;
  return !call.failed();
}

bool fits(const ImagesCall& call, const Job& job, const Argument& written, int width, int height) {
  for (std::size_t i = 0; i < job.operation->pictures.size(); ++i) {
    if (job.pictures[i].pixels != nullptr) {
      const Argument picture = argumentOf(job.operation->pictures[i].name, job.pictures[i]);
      if (!call.areApart(written, {&picture, 1})) {
        return false;
      }
    }
  }
  if (const char* const why = misfitOf(job, width, height)) {
    call.refuse("the parameters of %s do not go with %dx%d pixels: %s", job.operation->name, width,
                height, why);
    return false;
  }
  return true;
}

}  // namespace alg
