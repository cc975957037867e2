// libpng's errors leave by longjmp, so no object with a destructor may live in the frames between
// setjmp and the library; results travel in structs that the callers own.
#include "tools/photos/png_photo.h"

#include <fmt/format.h>
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "base/image_size.h"
#include "tools/photos/photo_faults.h"
#include "tools/photos/pixel_layout.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

constexpr char kNoMemory[] = "not enough memory";
constexpr char kXmpKey[] = "XML:com.adobe.xmp";
constexpr char kCommentKey[] = "Comment";

struct Reading {
  Bytes rest;
  std::string error;
  Photo photo;
  MetadataBlocks blocks;
  int rows = 0;  ///< decoded so far
  bool transparent = false;
  bool deep = false;  ///< more than 8 bits a sample
  bool tooLarge = false;
};

void readBytes(png_structp png, png_bytep to, std::size_t size) {
  auto& rest = static_cast<Reading*>(png_get_io_ptr(png))->rest;
  if (rest.size() < size) {
    png_error(png, "the file ends early");
  }
  std::memcpy(to, rest.data(), size);
  rest = rest.subspan(size);
}

[[noreturn]] void leave(png_structp png, png_const_charp text) {
  *static_cast<std::string*>(png_get_error_ptr(png)) = text;
  png_longjmp(png, 1);
}

void stayQuiet(png_structp, png_const_charp) {}

void readBlocks(png_structp png, png_infop info, MetadataBlocks& blocks) {
  png_charp name = nullptr;
  int method = 0;
  png_bytep bytes = nullptr;
  png_uint_32 size = 0;
  if (png_get_iCCP(png, info, &name, &method, &bytes, &size) != 0) {
    blocks.profile.assign(bytes, bytes + size);
  }
  if (png_get_eXIf_1(png, info, &size, &bytes) != 0) {
    blocks.exif.assign(bytes, bytes + size);
  }
  png_textp texts = nullptr;
  const int count = png_get_text(png, info, &texts, nullptr);
  for (const png_text* text = texts; text != texts + count; ++text) {
    const std::size_t length = std::max(text->text_length, text->itxt_length);
    if (std::string_view(text->key) == kXmpKey) {
      blocks.xmp.assign(text->text, length);
    } else if (std::string_view(text->key) == kCommentKey) {
      blocks.comment.assign(text->text, length);
    }
  }
}

/// Has rows delivered as B, G, R, A of 8 bits each.
void chooseOutput(png_structp png, png_infop info, Reading& reading) {
  reading.deep = png_get_bit_depth(png, info) == 16;
  const bool alpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0;
  reading.transparent = alpha || png_get_valid(png, info, PNG_INFO_tRNS) != 0;
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_bgr(png);
  png_set_add_alpha(png, 255, PNG_FILLER_AFTER);
}

/// The whole file. Returns false with `error` set, after what could be decoded.
bool readAll(png_structp png, png_infop info, Reading& reading) {
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_set_read_fn(png, &reading, readBytes);
  png_set_user_limits(png, kMaxPictureSide, kMaxPictureSide);
  png_read_info(png, info);
  const auto width = png_get_image_width(png, info);
  const auto height = png_get_image_height(png, info);
  reading.photo.width = static_cast<int>(width);
  reading.photo.height = static_cast<int>(height);
  reading.tooLarge = !isPictureSize(width, height);
  if (reading.tooLarge) {
    png_error(png, "too large");
  }
  chooseOutput(png, info, reading);
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  const std::size_t stride = std::size_t{kArgbBytes} * width;
  reading.photo.pixels = allocateBlock(stride * height);
  if (!reading.photo.pixels) {
    png_error(png, kNoMemory);
  }
  std::memset(reading.photo.pixels.get(), 0x80, stride * height);  // what a damaged file lacks
  for (int pass = 0; pass < passes; ++pass) {
    for (png_uint_32 y = 0; y < height; ++y) {
      png_read_row(png, reading.photo.pixels.get() + stride * y, nullptr);
      reading.rows += pass + 1 == passes ? 1 : 0;
    }
  }
  png_read_end(png, info);
  return true;
}

void writeBlocks(png_structp png, png_infop info, const MetadataBlocks& blocks) {
  if (!blocks.profile.empty()) {
    png_set_iCCP(png, info, "ICC", PNG_COMPRESSION_TYPE_BASE, blocks.profile.data(),
                 static_cast<png_uint_32>(blocks.profile.size()));
  }
  if (!blocks.exif.empty()) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(blocks.exif.size()),
                   const_cast<png_bytep>(blocks.exif.data()));  // only read
  }
  const auto addText = [&](const char* key, const std::string& value, int kind) {
    png_text text{};
    text.compression = kind;
    text.key = const_cast<png_charp>(key);
    text.text = const_cast<png_charp>(value.c_str());
    if (!value.empty()) {
      png_set_text(png, info, &text, 1);
    }
  };
  addText(kXmpKey, blocks.xmp, PNG_ITXT_COMPRESSION_NONE);
  addText(kCommentKey, blocks.comment, PNG_TEXT_COMPRESSION_NONE);
}

bool writeAll(png_structp png, png_infop info, const Photo& photo, const MetadataBlocks& blocks) {
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_set_IHDR(png, info, static_cast<png_uint_32>(photo.width),
               static_cast<png_uint_32>(photo.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_benign_errors(png, 1);  // a profile that it finds fault with is left out
  // Photos are noise: more effort makes them a few per cent smaller and several times slower.
  png_set_compression_level(png, 3);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
  writeBlocks(png, info, blocks);
  png_write_info(png, info);
  png_set_bgr(png);
  png_set_filler(png, 0, PNG_FILLER_AFTER);
  const std::size_t stride = std::size_t{kArgbBytes} * static_cast<std::size_t>(photo.width);
  for (int y = 0; y < photo.height; ++y) {
    png_write_row(png, photo.pixels.get() + stride * static_cast<std::size_t>(y));
  }
  png_write_end(png, info);
  return true;
}

}  // namespace

PhotoFile decodePngPhoto(Bytes file, const std::filesystem::path& path,
                         const PhotoOptions& options) {
  Reading reading;
  reading.rest = file;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reading.error, leave, stayQuiet);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  const bool whole = info != nullptr && readAll(png, info, reading);
  if (info != nullptr && reading.photo.pixels) {
    readBlocks(png, info, reading.blocks);
  }
  png_destroy_read_struct(&png, &info, nullptr);
  Photo& photo = reading.photo;
  if (reading.tooLarge) {
    throw BadInput(tooLarge(path, photo.width, photo.height));
  }
  if (!whole && reading.error == kNoMemory) {
    throw std::bad_alloc();
  }
  if (!whole && (!photo.pixels || reading.rows == 0)) {
    throw BadInput(fmt::format("{}: damaged beyond decoding: {}", path.string(), reading.error));
  }
  if (!whole && reading.rows < photo.height) {
    refuseOrNote(path, options,
                 fmt::format("damaged: {} of {} rows are lost ({})", photo.height - reading.rows,
                             photo.height, reading.error));
  }
  if (reading.transparent && layOverWhite(photo)) {
    note(fmt::format("{}: its transparent parts are laid over white", path.string()));
  }
  if (reading.deep) {
    note(fmt::format("{}: 16 bits a sample become 8", path.string()));
  }
  const bool damaged = reading.rows < photo.height;
  return {.photo = std::move(photo),
          .metadata = Metadata(reading.blocks, path),
          .origin = {.path = path, .format = PictureFormat::kPng, .damaged = damaged}};
}

std::vector<uint8_t> encodePngPhoto(const Photo& photo, const MetadataBlocks& metadata,
                                    const std::filesystem::path& path) {
  std::vector<uint8_t> file;
  std::string error;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, leave, stayQuiet);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  if (info != nullptr) {
    png_set_write_fn(
        png, &file,
        [](png_structp writer, png_bytep bytes, std::size_t size) {
          auto& to = *static_cast<std::vector<uint8_t>*>(png_get_io_ptr(writer));
          try {
            to.insert(to.end(), bytes, bytes + size);
          } catch (const std::bad_alloc&) {
            to.clear();
          }
          if (to.empty()) {
            png_error(writer, kNoMemory);
          }
        },
        nullptr);
  }
  const bool written = info != nullptr && writeAll(png, info, photo, metadata);
  png_destroy_write_struct(&png, &info);
  if (!written && (error.empty() || error == kNoMemory)) {
    throw std::bad_alloc();
  }
  if (!written) {
    throw UserError(fmt::format("{}: can't be written as PNG: {}", path.string(), error));
  }
  return file;
}

}  // namespace alg::tool
