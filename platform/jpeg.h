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

struct JpegDecodeOptions {
  /// The codec may deliver an image reduced to 1/2, 1/4 or 1/8, as long as its longer side keeps at
  /// least this many pixels; 0 decodes at full size.
  int keepSide = 0;
  /// Larger images are refused before memory is taken for them.
  std::size_t maxPixelBytes = std::numeric_limits<int32_t>::max();
};

/// Decodes a whole JPEG file: baseline or progressive; grey, YCbCr, RGB, CMYK or YCCK (Adobe's
/// inverted ones too). A truncated file decodes with the missing part grey, unless nothing of the
/// image is there. Empty when the bytes are no JPEG or memory is short, and for images beyond
/// 65,535 pixels a side or 256 million in all, or with more scans than any but a hostile file has
/// (32 for the largest images, 500 for small ones).
std::optional<DecodedJpeg> decodeJpeg(std::span<const uint8_t> file,
                                      const JpegDecodeOptions& options = {});

/// Encodes width x height pixels, straight from the caller's memory; alpha is ignored.
/// @param quality  0..100; the codec clamps it
/// Empty when a size is below 1 or beyond what a JPEG can hold, or memory is short.
std::optional<EncodedJpeg> encodeJpeg(const uint8_t* pixels, int width, int height, int quality);

}  // namespace alg
