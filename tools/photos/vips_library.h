// The photo formats beside JPEG and PNG, through libvips. It is loaded when the first such file
// comes: without it everything else works, and nothing pays for loading it.
#pragma once

#include <filesystem>
#include <vector>

#include "tools/photos/photo_file.h"

namespace alg::tool {

/// Decodes a WebP, TIFF, HEIC or AVIF file as it lies, not yet upright, and lays transparent parts
/// over white. Throws UserError, BadInput among them.
PhotoFile decodeWithVips(PictureFormat format, Bytes file, const std::filesystem::path& path,
                         const PhotoOptions& options);

/// Encodes a WebP or TIFF file. Throws UserError.
/// @param quality  of WebP; TIFF loses nothing
std::vector<uint8_t> encodeWithVips(PictureFormat format, const Photo& photo, int quality,
                                    const MetadataBlocks& blocks,
                                    const std::filesystem::path& path);

}  // namespace alg::tool
