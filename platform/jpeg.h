// JPEG decoding and encoding. Pixels are B, G, R, A in memory (ARGB words), rows packed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "base/block.h"

namespace alg {

struct DecodedJpeg {
  Block pixels;  ///< width x height x 4 bytes from malloc, alpha 255
  int width = 0;
  int height = 0;
};

struct EncodedJpeg {
  Block bytes;
  std::size_t size = 0;
};

/// The most memory that a decoder may take in addition to the result, in bytes. Files in several
/// scans keep the coefficients of the whole image, two bytes a sample: 6 bytes a pixel at full
/// chroma resolution, 3 at half of it in both directions, 8 with four colours (sides rounded up to
/// whole blocks; the result has 4). That is enough for 116 million pixels of the first kind and 233
/// million of the second. Files in one scan take a few rows.
inline constexpr long kMostJpegWorkBytes = 700'000'000;

/// The most scans that a file may have: from 17 million pixels on, and up to 5 million; in between,
/// scans times pixels may reach 2^29. A file of a few kilobytes can demand that many passes over
/// all coefficients. On a desktop machine each pass costs up to 0.15 ms of CPU per megabyte of the
/// result, with arithmetic coding 0.6 ms; on top of that, a file in several scans costs 3 ms per
/// megabyte.
inline constexpr int kMostJpegScansLarge = 32;
inline constexpr int kMostJpegScansSmall = 100;

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

/// Encodes width x height pixels, straight from the caller's memory; alpha is ignored.
/// @param quality  0..100; the codec clamps it
/// Empty when a size is below 1 or beyond what a JPEG can hold, or memory is short.
std::optional<EncodedJpeg> encodeJpeg(const uint8_t* pixels, int width, int height, int quality);

}  // namespace alg
