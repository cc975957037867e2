// The pipeline's typed call.
#pragma once

#include <cstdint>

#include "catalogue/operation.h"
#include "effect/frame_strips.h"

namespace alg {

enum class Outcome : uint8_t { kDone, kNoPicture, kNoMemory };

/// Runs an operation on a frame with even sides and packed rows, in place; one that the pipeline
/// does not run passes the frame through. An operation with a picture needs it; kNoPicture means
/// that it has too few rows, and that the frame is as it was.
Outcome runEffect(const Operation& operation, const Frame& frame,
                  const PictureView* picture = nullptr);

}  // namespace alg
