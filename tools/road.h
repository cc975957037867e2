// A photo on the application's way: ARGB pixels -> NV21 frame -> effect -> pixels.
#pragma once

#include <functional>

#include "effect/effect_table.h"
#include "effect/pipeline.h"
#include "tools/photo.h"

namespace alg::tool {

/// Encodes a photo with even sides to an NV21 frame, has `work` done on that and decodes it again.
void throughFrame(Photo& photo, const std::function<void(const Frame&)>& work);

/// Runs an effect on a photo with even sides, in place. Throws PictureError when its overlay
/// picture is missing and the photo therefore passed through.
void applyEffect(const EffectTableEntry& effect, Photo& photo);

}  // namespace alg::tool
