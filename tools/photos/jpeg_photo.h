// Photos as JPEG files: what the codec reports, in sentences.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/metadata/jpeg_layout.h"
#include "tools/photos/photo_file.h"

namespace alg::tool {

/// Why a file can't be decoded: a sentence.
std::string whyRefused(const std::filesystem::path& path, JpegFault fault, const JpegInfo& info,
                       const JpegLayout& layout);
/// What of a photo is lost: a few words, which begin with "damaged".
std::string whatIsLost(const JpegDamage& damage, int rows);

/// Decodes a file as it lies, not yet upright. Throws BadInput.
PhotoFile decodeJpegPhoto(Bytes file, const std::filesystem::path& path,
                          const PhotoOptions& options, const KeepSide& keepSide);

/// Throws UserError.
std::vector<uint8_t> encodeJpegPhoto(const Photo& photo, int quality, JpegSampling sampling,
                                     Bytes segments = {});

}  // namespace alg::tool
