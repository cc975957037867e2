#include "platform/bitmap.h"

#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "base/image_size.h"
#include "platform/device_path.h"

namespace alg {
namespace {

/// a x c / 255, rounded as the platform's decoder does it.
uint8_t premultiply(uint8_t alpha, uint8_t channel) {
  return static_cast<uint8_t>((alpha * channel + 127) / 255);
}

void premultiplyAll(uint8_t* pixels, std::size_t count) {
  for (uint8_t* pixel = pixels; pixel != pixels + 4 * count; pixel += 4) {
    for (int channel = 0; channel < 3; ++channel) {
      pixel[channel] = premultiply(pixel[3], pixel[channel]);
    }
  }
}

/// An open PNG file and its reader. libpng's errors leave by longjmp, so the decoding steps keep
/// their results in here and no object with a destructor of their own.
struct PngReader {
  std::FILE* file;
  png_structp png;
  png_infop info;
  uint8_t* pixels = nullptr;  // from calloc
  bool hasAlpha = false;

  explicit PngReader(const char* path)
      : file(std::fopen(path, "rb")),
        png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, leave, stayQuiet)),
        info(png != nullptr ? png_create_info_struct(png) : nullptr) {}
  ~PngReader() {
    std::free(pixels);
    png_destroy_read_struct(&png, &info, nullptr);
    if (file != nullptr) {
      std::fclose(file);
    }
  }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  [[noreturn]] static void leave(png_structp png, png_const_charp /*message*/) {
    png_longjmp(png, 1);
  }
  static void stayQuiet(png_structp /*png*/, png_const_charp /*message*/) {}
};

/// Asks for 8-bit R, G, B, A whatever the file holds. Sample values stay as they are: gamma and
/// colour profiles are not applied.
void requestRgba(png_structp png) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_add_alpha(png, 255, PNG_FILLER_AFTER);
}

bool decode(PngReader& reader) {
  if (reader.file == nullptr || reader.info == nullptr) {
    return false;
  }
  if (setjmp(png_jmpbuf(reader.png)) != 0) {
    return false;
  }
  png_set_user_limits(reader.png, kMaxPictureSide, kMaxPictureSide);
  png_init_io(reader.png, reader.file);
  png_read_info(reader.png, reader.info);
  reader.hasAlpha = (png_get_color_type(reader.png, reader.info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                    png_get_valid(reader.png, reader.info, PNG_INFO_tRNS) != 0;
  requestRgba(reader.png);
  const int passes = png_set_interlace_handling(reader.png);
  png_read_update_info(reader.png, reader.info);
  const png_uint_32 height = png_get_image_height(reader.png, reader.info);
  if (!isPictureSize(png_get_image_width(reader.png, reader.info), height)) {
    return false;
  }
  const std::size_t pitch = png_get_rowbytes(reader.png, reader.info);
  reader.pixels = static_cast<uint8_t*>(std::calloc(height, pitch));
  if (reader.pixels == nullptr) {
    return false;
  }
  for (int pass = 0; pass < passes; ++pass) {
    for (png_uint_32 row = 0; row < height; ++row) {
      png_read_row(reader.png, reader.pixels + pitch * row, nullptr);
    }
  }
  png_read_end(reader.png, nullptr);
  return true;
}

}  // namespace

Bitmap bitmap_effect;
Bitmap bitmap_front;

bool decodePngFile(const char* path, Bitmap& bitmap) try {
  PngReader reader(devicePath(path).c_str());
  if (!decode(reader)) {
    return false;
  }
  const auto width = png_get_image_width(reader.png, reader.info);
  const auto height = png_get_image_height(reader.png, reader.info);
  if (reader.hasAlpha) {
    premultiplyAll(reader.pixels, std::size_t{width} * height);
  }
  bitmap = Bitmap{Block(std::exchange(reader.pixels, nullptr)), static_cast<int>(width),
                  static_cast<int>(height)};
  return true;
} catch (const std::bad_alloc&) {  // not even the path has room
  return false;
}

bool decodeEffectPicture(std::string_view name, Bitmap& bitmap) try {
  return decodePngFile(std::string(kPictureFolder).append(name).c_str(), bitmap);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace alg
