// JPEG through libjpeg. Its errors leave by longjmp, so no object with a destructor may live in the
// frames between setjmp and the codec; results travel in plain structs.
#include "platform/jpeg.h"

#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <functional>
#include <utility>

#include "base/image_size.h"
#include "platform/large_block.h"

namespace alg {
namespace {

struct ErrorManager {
  jpeg_error_mgr base;
  jpeg_progress_mgr progress;
  std::jmp_buf failed;
};

[[noreturn]] void leave(j_common_ptr codec) {
  std::longjmp(reinterpret_cast<ErrorManager*>(codec->err)->failed, 1);
}

void stayQuiet(j_common_ptr) {}

/// The most scans that a file of so many pixels may have: a few kilobytes can ask for thousands of
/// passes over the whole image. Ordinary progressive files have about ten.
int mostScans(int64_t pixels) {
  constexpr int64_t kPixelScans = int64_t{1} << 29;
  return static_cast<int>(
      std::clamp<int64_t>(kPixelScans / pixels, kMostJpegScansLarge, kMostJpegScansSmall));
}

/// Called by the codec now and then; stops decoding a file with too many scans.
void limitScans(j_common_ptr codec) {
  const auto& jpeg = *reinterpret_cast<j_decompress_ptr>(codec);
  if (jpeg.input_scan_number > mostScans(int64_t{jpeg.image_width} * jpeg.image_height)) {
    leave(codec);
  }
}

jpeg_error_mgr* prepare(ErrorManager& errors) {
  jpeg_std_error(&errors.base);
  errors.base.error_exit = leave;
  errors.base.output_message = stayQuiet;
  errors.progress = {limitScans, 0, 0, 0, 0};
  return &errors.base;
}

/// Turns a row of C, M, Y, K pixels into B, G, R, A in place. Adobe's files hold inverted values.
void cmykToBgra(uint8_t* row, std::size_t pixels, bool inverted) {
  for (uint8_t* p = row; p != row + kArgbBytes * pixels; p += kArgbBytes) {
    const auto ink = [&](int index) { return inverted ? p[index] : 255 - p[index]; };
    const int cyan = ink(0), magenta = ink(1), yellow = ink(2), black = ink(3);
    p[0] = static_cast<uint8_t>((yellow * black + 127) / 255);
    p[1] = static_cast<uint8_t>((magenta * black + 127) / 255);
    p[2] = static_cast<uint8_t>((cyan * black + 127) / 255);
    p[3] = 255;
  }
}

/// The codec's strongest reduction that keeps at least `keepSide` pixels of the longer side.
unsigned reduction(const jpeg_decompress_struct& jpeg, int keepSide) {
  const JDIMENSION side = std::max(jpeg.image_width, jpeg.image_height);
  unsigned denominator = 1;
  while (keepSide > 0 && denominator < 8 &&
         side / (2 * denominator) >= static_cast<JDIMENSION>(keepSide)) {
    denominator *= 2;
  }
  return denominator;
}

/// Whether the codec has run past the end of the file: it then continues with an end marker of its
/// own.
bool ranOut(const jpeg_source_mgr& source, std::span<const uint8_t> file) {
  const std::less<> before;
  return before(source.next_input_byte, file.data()) ||
         before(file.data() + file.size(), source.next_input_byte);
}

/// Whether a file ends before its first scan's data, so that there is nothing to show.
bool nothingLeft(const jpeg_source_mgr& source, std::span<const uint8_t> file) {
  const bool endMarker = source.bytes_in_buffer >= 2 && source.next_input_byte[0] == 0xFF &&
                         source.next_input_byte[1] == JPEG_EOI;
  return ranOut(source, file) || source.bytes_in_buffer == 0 || endMarker;
}

/// The part of a file before its last marker.
std::span<const uint8_t> withoutLastSegment(std::span<const uint8_t> file) {
  for (std::size_t at = file.size(); at >= 2; --at) {
    const bool stuffing = file[at - 1] == 0x00 || file[at - 1] == 0xFF;
    if (file[at - 2] == 0xFF && !stuffing) {
      return file.first(at - 2);
    }
  }
  return {};
}

/// Decodes into *pixels, a block from malloc that the caller frees, even when this fails.
bool decodeInto(jpeg_decompress_struct& jpeg, ErrorManager& errors, std::span<const uint8_t> file,
                const JpegDecodeOptions& options, uint8_t** pixels) {
  if (setjmp(errors.failed) != 0) {
    return false;
  }
  jpeg_create_decompress(&jpeg);
  // Anything beyond this would go to a temporary file, which this codec lacks: an error.
  jpeg.mem->max_memory_to_use = kMostJpegWorkBytes;
  jpeg_mem_src(&jpeg, file.data(), static_cast<unsigned long>(file.size()));
  jpeg_read_header(&jpeg, TRUE);
  if (nothingLeft(*jpeg.src, file) || !isPictureSize(jpeg.image_width, jpeg.image_height)) {
    return false;
  }
  jpeg.progress = &errors.progress;
  const bool cmyk = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
  jpeg.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_BGRA;
  jpeg.scale_num = 1;
  jpeg.scale_denom = reduction(jpeg, options.keepSide);
  jpeg_calc_output_dimensions(&jpeg);
  const std::size_t pitch = std::size_t{kArgbBytes} * jpeg.output_width;
  if (pitch * jpeg.output_height > options.maxPixelBytes) {
    return false;
  }
  *pixels = allocateLargeBlock(pitch * jpeg.output_height).release();
  if (*pixels == nullptr) {
    return false;
  }
  jpeg_start_decompress(&jpeg);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = *pixels + pitch * jpeg.output_scanline;
    jpeg_read_scanlines(&jpeg, &row, 1);
    if (cmyk) {
      cmykToBgra(row, jpeg.output_width, jpeg.saw_Adobe_marker != FALSE);
    }
  }
  jpeg_finish_decompress(&jpeg);
  return true;
}

/// Encodes into *bytes, which the caller frees, even when this fails. It starts as a block of *size
/// bytes; the codec may move on to larger ones of its own, but leaves the first to the caller.
bool encodeInto(jpeg_compress_struct& jpeg, ErrorManager& errors, const uint8_t* pixels, int width,
                int height, int quality, unsigned char** bytes, unsigned long* size) {
  if (setjmp(errors.failed) != 0) {
    if (jpeg.dest != nullptr && *bytes != nullptr) {
      // The codec may have moved to a larger buffer; only this call tells where it is.
      jpeg.dest->term_destination(&jpeg);
    }
    return false;
  }
  jpeg_create_compress(&jpeg);
  jpeg.image_width = static_cast<JDIMENSION>(width);
  jpeg.image_height = static_cast<JDIMENSION>(height);
  jpeg.input_components = kArgbBytes;
  jpeg.in_color_space = JCS_EXT_BGRX;
  jpeg_mem_dest(&jpeg, bytes, size);
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  const std::size_t pitch = std::size_t{kArgbBytes} * jpeg.image_width;
  while (jpeg.next_scanline < jpeg.image_height) {
    auto* row = const_cast<JSAMPROW>(pixels + pitch * jpeg.next_scanline);  // only read
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  return true;
}

/// Decodes a file; `cutShort` tells whether a failure is due to its early end.
std::optional<DecodedJpeg> decodeOnce(std::span<const uint8_t> file,
                                      const JpegDecodeOptions& options, bool& cutShort) {
  jpeg_decompress_struct jpeg{};
  ErrorManager errors;
  jpeg.err = prepare(errors);
  uint8_t* pixels = nullptr;
  const bool decoded = decodeInto(jpeg, errors, file, options, &pixels);
  cutShort = !decoded && jpeg.src != nullptr && ranOut(*jpeg.src, file);
  DecodedJpeg result;
  result.pixels.reset(pixels);
  result.width = static_cast<int>(jpeg.output_width);
  result.height = static_cast<int>(jpeg.output_height);
  jpeg_destroy_decompress(&jpeg);
  if (!decoded) {
    return std::nullopt;
  }
  return result;
}

}  // namespace

std::optional<DecodedJpeg> decodeJpeg(std::span<const uint8_t> file,
                                      const JpegDecodeOptions& options) {
  bool cutShort = false;
  auto image = decodeOnce(file, options, cutShort);
  if (!image && cutShort) {
    // A file may end inside the header of a later scan; what comes before it is still an image.
    image = decodeOnce(withoutLastSegment(file), options, cutShort);
  }
  return image;
}

std::optional<EncodedJpeg> encodeJpeg(const uint8_t* pixels, int width, int height, int quality) {
  constexpr int kLongestSide = JPEG_MAX_DIMENSION;
  if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide) {
    return std::nullopt;
  }
  jpeg_compress_struct jpeg{};
  ErrorManager errors;
  jpeg.err = prepare(errors);
  // A photo takes less than this at quality 95. Memory that is never written costs nothing, but
  // growing from the codec's initial 4 KB would copy all bytes once, into fresh memory each time.
  constexpr std::size_t kHeaders = 4096;  // bytes
  const std::size_t guess = kHeaders + pixelCount(width, height);
  Block first = allocateLargeBlock(guess);
  unsigned char* bytes = first.get();
  unsigned long size = first ? static_cast<unsigned long>(guess) : 0;
  const bool encoded = encodeInto(jpeg, errors, pixels, width, height, quality, &bytes, &size);
  if (bytes == first.get()) {
    (void)first.release();
  }
  EncodedJpeg result{Block(bytes), size};
  jpeg_destroy_compress(&jpeg);
  return encoded ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace alg
