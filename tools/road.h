// A photo on the application's way: ARGB pixels -> NV21 frame -> effect -> pixels.
#pragma once

#include "effect/effect_table.h"
#include "tools/photo.h"

namespace alg::tool {

/// Runs an effect on a photo with even sides, in place. Returns false, after a note, when its
/// overlay picture is missing and the photo therefore passed through.
bool applyEffect(const EffectTableEntry& effect, Photo& photo);

}  // namespace alg::tool
