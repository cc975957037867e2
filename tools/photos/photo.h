// The pixels of photos.
#pragma once

#include <cstdint>
#include <filesystem>

#include "camerautil/turn_rows.h"
#include "platform/jpeg.h"

namespace alg::tool {

/// Pixels as B, G, R, A bytes, rows packed, alpha 255.
using Photo = DecodedJpeg;

/// Some pixels of an image.
struct Part {
  int x, y;
  int width, height;
};
struct Place {
  int x, y;
};

/// Whether an orientation exchanges width and height.
constexpr bool isOnItsSide(int orientation) { return orientation >= 5; }
/// Undoes an orientation, 1 to 8 as in Exif, of 4-byte pixels on their way into other memory.
/// @param width, height  of the source
void turnUpright(int orientation, Rows<const uint8_t> src, Rows<uint8_t> dst, int width,
                 int height);
/// Where some of an image's pixels are once it is upright: their first column and row there.
/// @param part         as they lie; all of them together have
/// @param allWidth     columns and
/// @param allHeight    rows
Place placeUpright(int orientation, const Part& part, int allWidth, int allHeight);
/// Undoes a photo's.
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
