// Photos as JPEG files: what the codec reports, in sentences.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/jpeg_reader.h"
#include "tools/metadata/jpeg_layout.h"
#include "tools/photos/photo_file.h"

namespace alg::tool {

/// Why a file can't be decoded: a sentence.
std::string whyRefused(const std::filesystem::path& path, JpegFault fault, const JpegInfo& info,
                       const JpegLayout& layout);
/// What of a photo is lost: a few words, which begin with "damaged".
std::string whatIsLost(const JpegDamage& damage, int rows);

/// Decodes all rows and turns them, some at a time. After a fault, the rest is left as it is.
Photo decodeUpright(JpegReader& reader, int orientation);
/// Decodes a file and turns the photo upright. Throws BadInput.
PhotoFile decodeJpegPhoto(Bytes file, const std::filesystem::path& path,
                          const PhotoOptions& options, const KeepSide& keepSide);

/// Throws UserError.
std::vector<uint8_t> encodeJpegPhoto(const Photo& photo, const JpegCoding& coding,
                                     Bytes segments = {});

}  // namespace alg::tool
