// WebP files around their picture.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/metadata/metadata.h"

namespace alg::tool {

/// A WebP file with the picture of another and these metadata, byte for byte.
std::vector<uint8_t> webpWith(Bytes file, int width, int height, const MetadataBlocks& blocks);

}  // namespace alg::tool
