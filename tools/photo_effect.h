// An operation of the catalogue, run on a photo.
#pragma once

#include <vector>

#include "catalogue/operation.h"
#include "effect/frame_strips.h"
#include "tools/effect_pictures.h"
#include "tools/photo.h"

namespace alg::tool {

/// The effects of the catalogue, in its order.
std::vector<const Operation*> effects();

/// Whether an operation takes photos as frames on the pipeline, with even sides. All others are
/// effects that run on a photo's pixels.
inline bool takesFrames(const Operation& operation) {
  return operation.pipeline.runs || !isEffect(operation);
}

/// Runs an operation, of any kind of pixels except frames, on those of a photo, in place.
/// @param call  values and pictures
void runOnPixels(const Operation& operation, const Call& call, Photo& photo);

/// Runs an operation that takes frames on an NV21 frame, in place. Throws PictureError.
/// @param picture  in place of the device's; without pixels for none
void runOnFrame(const Operation& operation, const PictureView& picture, const Frame& frame);

/// Runs an operation on a photo, in place: as a frame, or on its pixels. Throws UserError,
/// PictureError among them.
/// @param call  values
void applyEffect(const Operation& operation, Call call, EffectPictures& pictures, Photo& photo);

}  // namespace alg::tool
