// A job as Java describes it.
#pragma once

#include <jni.h>

#include "jni/images_support.h"

namespace alg {

/// The arguments that several natives have in common.
struct JavaJob {
  jstring operation;
  jdouble amount;
  jdoubleArray values;
  jobjectArray pictures;    ///< for the roles that are read; null where there is none
  jintArray pictureShapes;  ///< Pixels.shape() of one after the other
  jobject cancellation;     ///< a buffer of one byte, or null
};

/// Fills in a job; false when something has been thrown.
bool readJob(const ImagesCall& call, const JavaJob& from, Job& job);

/// Throws if what the job writes to shares memory with one of its pictures, or its values do not go
/// with the image's size.
bool fits(const ImagesCall& call, const Job& job, const Argument& written, int width, int height);

}  // namespace alg
