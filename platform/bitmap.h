// Pictures of the device: decoded PNG files, and the two process-wide ones of the effects.
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
/// brought to 8-bit RGBA, without any gamma or colour correction; alpha is 255 where the file has
/// none. Returns false, and leaves the previous picture, when the file can't be read or decoded, is
/// no regular file, or has more than 65,535 pixels a side or 64 million in all.
bool decodePngFile(const char* path, Bitmap& bitmap);

/// The same for the file of that name among the pictures of the effects, in kPictureFolder.
bool decodeEffectPicture(std::string_view name, Bitmap& bitmap);

/// The picture that every overlay of the effect table, and of the classic effects, is decoded into.
/// Not locked: one effect run at a time.
extern Bitmap bitmap_effect;
/// The picture that lies over the image in the area effect. Not locked, either.
extern Bitmap bitmap_front;

}  // namespace alg
