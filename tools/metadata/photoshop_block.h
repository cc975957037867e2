// Photoshop's resources, among which IPTC records stand.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/metadata/jpeg_layout.h"

namespace alg::tool {

/// Takes thumbnails out. What does not read as resources stays as it is.
void dropThumbnails(std::vector<uint8_t>& resources);

/// A resource of IPTC records; empty for none.
std::vector<uint8_t> iptcResource(Bytes records);

}  // namespace alg::tool
