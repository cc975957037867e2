// Pixels as other libraries have them.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/photos/photo.h"

namespace alg::tool {

/// Fills a photo from R, G, B or R, G, B, A pixels, whose alpha it takes over.
void fromRgb(const uint8_t* pixels, int samples, Photo& photo);
/// R, G, B pixels.
std::vector<uint8_t> toRgb(const Photo& photo);

/// Lays pixels whose alpha is not 255 over white. Returns whether there were any.
bool layOverWhite(Photo& photo);

}  // namespace alg::tool
