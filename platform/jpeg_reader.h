// JPEG files as rows of pixels, any number at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "base/block.h"
#include "platform/jpeg_format.h"
#include "platform/jpeg_io.h"

namespace alg {

/// Makes pixels of C, M, Y, K, a byte each, as if inks were ideal filters of light. Both may be the
/// same memory.
/// @param inverted  255 is no ink; else 0 is
void convertCmyk(const uint8_t* inks, uint8_t* to, std::size_t pixels, JpegPixels order,
                 bool inverted);

/// Turns a row of decoded pixels of four bytes into others, in place.
using JpegRowWork = std::function<void(uint8_t* row, std::size_t pixels)>;

/// Decodes one file: baseline or progressive; grey, YCbCr, RGB, CMYK or YCCK (Adobe's inverted ones
/// too). Files in one scan take memory for a few rows, others up to kMostJpegWorkBytes. A truncated
/// file decodes with the missing part grey, unless no part of the image is there.
///
///   JpegReader reader(input);                         // reads the header
///   if (reader.start({.pixels = JpegPixels::kRgba}) == JpegFault::kNone) {
///     while (reader.read(rows, stride, 16) > 0) ...
///     if (reader.finish() == JpegFault::kNone) ...    // the image is whole, up to damage()
///   }
///
/// After a fault every call returns it again. One thread at a time; not always the same one.
class JpegReader {
 public:
  enum class Segments : uint8_t { kDrop, kKeep };

  struct Options {
    JpegPixels pixels = JpegPixels::kBgra;
    int reduction = 1;                     ///< 1, 2, 4 or 8: sides divided by this, rounded up
    std::size_t maxPixelBytes = SIZE_MAX;  ///< kTooLarge beyond it
    /// Run on each row, for pixels of four bytes; outlives the reader, and must not throw. Of CMYK
    /// files it gets C, M, Y, K, 255 for no ink, and is what makes `pixels` of them. Null: nothing
    /// is run, and inks are ideal filters of light.
    const JpegRowWork* rowWork = nullptr;
  };

  /// @param input  outlives the reader
  explicit JpegReader(JpegInput& input, Segments segments = Segments::kDrop);
  ~JpegReader();
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  JpegFault fault() const;
  /// Valid without a fault, and with kTooLarge.
  const JpegInfo& info() const;
  /// The file's APPn and COM segments in their order, each from its 0xFF on, except those that
  /// describe the file and not the picture: Adobe's, and the index of a multi-picture file. Null if
  /// there are none; `size` gets their bytes. Only for Segments::kKeep, which refuses files with
  /// more than kMostJpegSegmentBytes of them (kTooComplex).
  Block segments(std::size_t& size) const;

  /// Prepares decoding; decodes files in several scans up to their coefficients.
  JpegFault start(const Options& options);
  /// Size of the decoded image.
  int width() const;
  int height() const;
  /// The row that comes next.
  int row() const;
  /// Decodes the next `count` rows to `rows`, `stride` bytes apart (at least a row's bytes; those
  /// between rows are left alone). Returns how many; fewer at the image's end or after a fault.
  int read(uint8_t* rows, std::size_t stride, int count);
  /// After the last row: reads what follows the image data. A file with broken segments there
  /// counts as damaged beyond decoding.
  JpegFault finish();
  const JpegDamage& damage() const;

 private:
  struct Codec;
  std::unique_ptr<Codec> codec_;  ///< null when memory is short
};

/// Reads a file's header. `info` is valid without a fault, and with kTooLarge.
JpegFault readJpegInfo(JpegInput& input, JpegInfo& info);

}  // namespace alg
