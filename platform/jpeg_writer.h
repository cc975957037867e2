// Rows of pixels as a JPEG file, any number at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/jpeg_format.h"
#include "platform/jpeg_io.h"

namespace alg {

/// Encodes one baseline file, YCbCr, with memory for a few rows.
///
///   JpegWriter writer(output);
///   writer.start({.width = 640, .height = 480, .quality = 92});
///   writer.write(rows, stride, 480);
///   if (writer.finish() == JpegFault::kNone) ...
///
/// After a fault every call returns it again. One thread at a time; not always the same one.
class JpegWriter {
 public:
  struct Options {
    int width = 0;
    int height = 0;
    JpegPixels pixels = JpegPixels::kBgra;
    int quality = 75;        ///< 0..100; the codec clamps it
    JpegTables tables = {};  ///< in place of the quality's own, those that are known
    JpegSampling sampling = JpegSampling::k420;
    /// Whole APPn and COM segments, each from its 0xFF on (JpegReader::segments), written first.
    /// If none of them is JFIF's or Exif's, a JFIF segment goes before.
    std::span<const uint8_t> segments = {};
  };

  /// @param output  outlives the writer
  explicit JpegWriter(JpegOutput& output);
  ~JpegWriter();
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  JpegFault start(const Options& options);
  /// Encodes the next `count` rows, `stride` bytes apart; rows beyond the image are left out.
  JpegFault write(const uint8_t* rows, std::size_t stride, int count);
  /// After the last row.
  JpegFault finish();

  JpegFault fault() const;

 private:
  struct Codec;
  std::unique_ptr<Codec> codec_;  ///< null when memory is short
};

}  // namespace alg
