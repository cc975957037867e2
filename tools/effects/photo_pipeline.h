// A photo on the application's way: ARGB pixels -> NV21 frame -> effect -> pixels.
#pragma once

#include <functional>

#include "effect/frame_strips.h"
#include "tools/photos/photo.h"

namespace alg::tool {

/// Encodes a photo with even sides as an NV21 frame, runs `work` on that and decodes it again.
void throughFrame(Photo& photo, const std::function<void(const Frame&)>& work);

}  // namespace alg::tool
