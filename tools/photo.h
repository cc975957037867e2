// Photos: JPEG files as pixels.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "platform/jpeg.h"
#include "tools/files.h"
#include "tools/metadata.h"

namespace alg::tool {

inline constexpr int kDefaultQuality = 92;

/// Pixels as B, G, R, A bytes, rows packed, alpha 255.
using Photo = DecodedJpeg;

struct PhotoFile {
  Photo photo;
  Metadata metadata;
};

/// Decodes a JPEG file and turns the photo upright. Throws UserError.
/// @param keepSide  as for decodeJpeg(): the photo may come reduced, down to this longer side
PhotoFile readPhoto(const std::filesystem::path& path, int keepSide = 0);

/// Crops an odd side by one row or column, with a note: frames have even sides. Throws UserError
/// when nothing would be left.
void cropToEven(Photo& photo, const std::filesystem::path& path);

/// Uninitialised pixels. Throws std::bad_alloc.
Photo blankPhoto(int width, int height);
Photo copyOf(const Photo& photo);

/// The pixels as 0xAARRGGBB words.
uint32_t* wordsOf(const Photo& photo);
/// Sets alpha to 255 again after a routine that writes 0 there.
void makeOpaque(Photo& photo);

/// Encodes pixels (B, G, R, A). Throws UserError.
EncodedJpeg encodePixels(const uint8_t* pixels, int width, int height, int quality);
EncodedJpeg encodePhoto(const Photo& photo, int quality);
/// Writes a JPEG file with the metadata of the photo it was made from. Throws UserError.
void writePhoto(const std::filesystem::path& path, const Photo& photo, const Metadata& metadata,
                int quality, const WriteOptions& options = {});

/// The bytes of an encoded photo.
inline std::span<const uint8_t> bytesOf(const EncodedJpeg& jpeg) {
  return {jpeg.bytes.get(), jpeg.size};
}

}  // namespace alg::tool
