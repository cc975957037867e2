// A photo on the application's way: JPEG -> ARGB pixels -> NV21 frame -> effect -> pixels -> JPEG.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "effect/effect_table.h"
#include "platform/jpeg.h"

namespace alg::tool {

/// Pixels as B, G, R, A bytes, rows packed; both sides are even and at least 2.
using Photo = DecodedJpeg;

/// Decodes a JPEG file. An odd side is cropped by one row or column, with a note.
/// @param keepSide  as for decodeJpeg(): the photo may come reduced, down to this longer side
/// Throws UserError.
Photo readPhoto(const std::filesystem::path& path, int keepSide = 0);

/// Runs an effect on a photo, in place. Returns false, after a note, when its overlay picture is
/// missing and the photo therefore passed through.
bool applyEffect(const EffectTableEntry& effect, Photo& photo);

/// Encodes pixels (B, G, R, A). Throws UserError.
EncodedJpeg encodePixels(const uint8_t* pixels, int width, int height, int quality);

/// The bytes of an encoded photo.
inline std::span<const uint8_t> bytesOf(const EncodedJpeg& jpeg) {
  return {jpeg.bytes.get(), jpeg.size};
}

}  // namespace alg::tool
