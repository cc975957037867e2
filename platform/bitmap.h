// Pictures of the device: decoded PNG files, and the effects' two process-wide pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "base/image_size.h"

namespace alg {

/// A decoded picture: R, G, B, A bytes in memory, premultiplied, rows packed. Empty at first.
/// Copies share the pixels.
struct Bitmap {
  std::shared_ptr<uint8_t[]> pixels;
  int width = 0;
  int height = 0;

  std::size_t bytes() const {
    return static_cast<std::size_t>(kArgbBytes) * pixelCount(width, height);
  }
};

/// Decodes the PNG file at the device path `path` into `bitmap`. Grey, palette and 16-bit files are
/// converted to 8-bit RGBA, without any gamma or colour correction; alpha is 255 where the file has
/// none. Returns false, and keeps the previous picture, when the file can't be read or decoded, is
/// not a regular file, or has more than 65,535 pixels a side or 64 million in all.
bool decodePngFile(const char* path, Bitmap& bitmap);

/// The same for the effects' picture of that name, in kPictureFolder.
bool decodeEffectPicture(std::string_view name, Bitmap& bitmap);

/// decodePngFile() for a path of the machine that the library runs on, which is taken as it is.
bool decodePngOfHost(const char* path, Bitmap& bitmap);

/// The bitmap that every overlay of the pipeline and of the classic effects is decoded into. Not
/// locked: one effect run at a time.
extern Bitmap bitmap_effect;
/// The area effect's front picture. Not locked, either.
extern Bitmap bitmap_front;

}  // namespace alg
