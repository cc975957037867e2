// A JPEG file through work on its pixels into a JPEG file, a band of rows at a time: the image is
// never held as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "platform/jpeg_format.h"
#include "platform/jpeg_io.h"
#include "platform/jpeg_reader.h"

namespace alg {

/// Some rows of an image. Rows are packed.
struct JpegBand {
  const uint8_t* src = nullptr;  ///< the band's first row
  uint8_t* dst = nullptr;        ///< its result goes here; the same as src if the work is in place
  int width = 0;
  int rows = 0;
  int firstRow = 0;  ///< of the band, in the image
  int imageHeight = 0;
  int rowsAbove = 0;  ///< rows that may be read before the band's in src, and
  int rowsBelow = 0;  ///< behind them: the options' halo, fewer at the image's edges
};

/// Turns a band's source into its result; false ends the call with kCancelled. It is called once
/// for each band, from the first row to the last, by one thread, which need not be the caller's. It
/// must not throw.
using JpegBandWork = std::function<bool(const JpegBand&)>;

/// Holds the rows of an image on their way from the decoder to the work, which gets them as those
/// of another image: a turned one, say.
class JpegRowStore {
 public:
  virtual ~JpegRowStore() = default;
  /// @param width, height  of the image that comes; they become those of the image that is given
  /// @param pixels         of the rows that are given; those that come have four bytes a pixel, in
  ///                       the same order
  /// Returns whether there is memory.
  virtual bool begin(int& width, int& height, JpegPixels pixels) = 0;
  /// Takes the rows that come next.
  virtual void put(const uint8_t* rows, int count) = 0;
  /// Gives the next rows, once all have been put.
  virtual void get(uint8_t* rows, int count) = 0;
};

struct JpegBandOptions {
  JpegPixels source = JpegPixels::kBgra;
  const JpegRowWork* rowWork = nullptr;   ///< run on decoded rows, as JpegReader has it
  JpegPixels result = JpegPixels::kBgra;  ///< as wide as the source's if the work is in place
  bool inPlace = true;                    ///< one buffer is source and result; not with a halo
  int halo = 0;                           ///< rows that the work reads above and below a band
  int reduction = 1;                      ///< 1, 2, 4 or 8, as JpegReader has it
  int quality = 75;
  JpegTables tables = {};  ///< as JpegWriter has them
  JpegSampling sampling = JpegSampling::k420;
  JpegRowStore* store = nullptr;  ///< all rows go through it, if there is one
  /// Carries the file's own APPn and COM segments over (JpegReader::segments): orientation, profile
  /// and whatever else the camera wrote stay.
  bool carrySegments = true;
  /// Used if not carried: what the writer is to put first (JpegWriter::Options::segments).
  std::span<const uint8_t> segments = {};
  /// Decodes and works on a second thread while this one encodes. Images too small to gain from it
  /// or too wide for little memory, and systems that have no thread left, do without.
  bool overlap = true;
  int bandRows = 0;  ///< 0: as many as make a good size
};

struct JpegBandResult {
  JpegFault fault = JpegFault::kNone;
  JpegDamage damage;  ///< of the source
  int width = 0;      ///< of the image as decoded, once it is known
  int height = 0;
};

/// Decodes a file, works on it and encodes it. The result has the same bytes as decoding, working
/// and encoding the image as a whole, whatever the size of the bands. Beside input, output and the
/// work's own memory this takes at most 4 MB for files in one scan up to 50,000 pixels wide, and 5
/// MB for wider ones; a halo adds its rows, twice, a store itself and bands of more rows.
/// JpegReader says what other files take. `input` is read on the caller's thread first and then on
/// the one that works, which also gets rows from the store; `output` and the store are filled on
/// the caller's. With a fault, part of the output may have been taken.
JpegBandResult transcodeJpeg(JpegInput& input, JpegOutput& output, const JpegBandOptions& options,
                             const JpegBandWork& work);

}  // namespace alg
