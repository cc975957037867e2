// Colours from one ICC profile to another.
#pragma once

#include <cstdint>
#include <vector>

#include "base/image_size.h"
#include "tools/photos/photo.h"

namespace alg::tool {

/// Converts pixels, in place, by relative colorimetry with black points matched. An empty profile
/// stands for sRGB. Returns false, and changes nothing, when a profile can't be used.
bool convertColours(Photo& photo, const std::vector<uint8_t>& from, const std::vector<uint8_t>& to);

}  // namespace alg::tool
