// The pixels of photos.
#pragma once

#include <cstdint>
#include <filesystem>

#include "platform/jpeg.h"

namespace alg::tool {

/// Pixels as B, G, R, A bytes, rows packed, alpha 255.
using Photo = DecodedJpeg;

/// Whether an orientation exchanges width and height.
constexpr bool isOnItsSide(int orientation) { return orientation >= 5; }
/// Undoes an orientation, 1 to 8 as in Exif.
Photo upright(Photo photo, int orientation);

/// Crops an odd side by one row or column, with a note: frames have even sides. Throws BadInput
/// when nothing would be left.
void cropToEven(Photo& photo, const std::filesystem::path& path);

/// Uninitialised pixels. Throws std::bad_alloc.
Photo blankPhoto(int width, int height);
Photo copyOf(const Photo& photo);

/// The pixels as 0xAARRGGBB words.
uint32_t* wordsOf(const Photo& photo);
/// Sets alpha to 255 again after a routine that writes 0 there.
void makeOpaque(Photo& photo);

}  // namespace alg::tool
