// Whole JPEG files to pixels and back. For rows, see jpeg_reader.h and jpeg_writer.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "base/block.h"
#include "platform/jpeg_format.h"
#include "platform/jpeg_io.h"

namespace alg {

struct DecodedJpeg {
  Block pixels;  ///< width x height x 4 bytes B, G, R, A from malloc, alpha 255, rows packed
  int width = 0;
  int height = 0;
};

struct EncodedJpeg {
  Block bytes;
  std::size_t size = 0;
};

struct JpegDecodeOptions {
  /// The codec may deliver an image reduced to 1/2, 1/4 or 1/8, as long as its longer side keeps at
  /// least this many pixels; 0 decodes at full size.
  int keepSide = 0;
  /// Larger images are refused before memory is allocated for them.
  std::size_t maxPixelBytes = std::numeric_limits<int32_t>::max();
};

/// Decodes a whole JPEG file: baseline or progressive; grey, YCbCr, RGB, CMYK or YCCK (Adobe's
/// inverted ones too). A truncated file decodes with the missing part grey, unless no part of the
/// image is there. Empty when the bytes are not a JPEG file or memory is short, and for images
/// beyond 65,535 pixels a side or 256 million in all, or with more scans or coefficients (see
/// above) than any but a hostile file has.
std::optional<DecodedJpeg> decodeJpeg(std::span<const uint8_t> file,
                                      const JpegDecodeOptions& options = {});

/// Encodes width x height pixels (B, G, R, A, rows packed), straight from the caller's memory;
/// alpha is ignored.
/// @param quality  0..100; the codec clamps it
/// Empty when a size is below 1 or beyond what a JPEG can hold, or memory is short.
std::optional<EncodedJpeg> encodeJpeg(const uint8_t* pixels, int width, int height, int quality);

/// Pixels of the caller's.
struct JpegView {
  uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  std::size_t stride = 0;  ///< bytes from a row to the next
  JpegPixels order = JpegPixels::kBgra;
};

/// Decodes a file into the caller's pixels.
/// @param target     as large as the decoded image: JpegInfo::reducedWidth and reducedHeight; else
///                   kBadSize, and nothing is written
/// @param reduction  1, 2, 4 or 8
/// Writes nothing when the header is faulty; with any other fault, what could be decoded before it.
JpegFault decodeJpegInto(JpegInput& input, int reduction, const JpegView& target,
                         JpegDamage& damage);

/// Encodes the caller's pixels, which are only read.
/// @param source   pixels, size, stride and order
/// @param quality  0..100; the codec clamps it
JpegFault encodeJpegTo(JpegOutput& output, const JpegView& source, int quality,
                       JpegSampling sampling = JpegSampling::k420);

}  // namespace alg
