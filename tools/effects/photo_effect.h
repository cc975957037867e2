// An operation of the catalogue, run on a photo.
#pragma once

#include <cstdint>
#include <vector>

#include "catalogue/operation.h"
#include "effect/frame_strips.h"
#include "tools/effects/effect_pictures.h"
#include "tools/photos/photo.h"

namespace alg::tool {

/// The effects of the catalogue, in its order.
std::vector<const Operation*> effects();

/// The pixels that an effect of the pipeline works on.
enum class Way : uint8_t {
  kPhoto,  ///< the photo's, like all other effects
  kFrame   ///< a camera frame's that is made of the photo: the application's way
};

/// Whether an operation takes photos as frames on the pipeline, with even sides. All others are
/// effects that run on a photo's pixels. Names that pass through are there for frames alone.
inline bool takesFrames(const Operation& operation, Way way) {
  return (way == Way::kFrame && operation.pipeline.runs) || !isEffect(operation);
}

/// Runs an operation, of any kind of pixels except frames, on those of a photo, in place.
/// @param call  values and pictures
void runOnPixels(const Operation& operation, const Call& call, Photo& photo);

/// Runs an operation that takes frames on an NV21 frame, in place. Throws PictureError.
/// @param picture  in place of the device's; without pixels for none
void runOnFrame(const Operation& operation, const PictureView& picture, const Frame& frame);

/// A call with a photo's size and its pictures. Throws UserError, PictureError among them.
/// @param call  values
Call callFor(const Operation& operation, Call call, EffectPictures& pictures, int width,
             int height);

/// Runs an operation on a photo, in place: as a frame, or on its pixels. Throws UserError,
/// PictureError among them.
/// @param call  values
void applyEffect(const Operation& operation, const Call& call, Way way, EffectPictures& pictures,
                 Photo& photo);

}  // namespace alg::tool
