// Photos as PNG files.
#pragma once

#include <filesystem>
#include <vector>

#include "tools/photos/photo_file.h"

namespace alg::tool {

/// Decodes a file as it lies, not yet upright, and lays transparent parts over white. Throws
/// BadInput.
PhotoFile decodePngPhoto(Bytes file, const std::filesystem::path& path,
                         const PhotoOptions& options);

/// Throws UserError.
std::vector<uint8_t> encodePngPhoto(const Photo& photo, const MetadataBlocks& metadata,
                                    const std::filesystem::path& path);

}  // namespace alg::tool
