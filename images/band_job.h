// A job on bands of a JPEG's rows.
#pragma once

#include <optional>

#include "codec/jpeg_bands.h"
#include "images/work_rows.h"

namespace alg {

/// Runs an effect whose bands need no other rows, or only near ones, on packed rows. One thread at
/// a time.
class BandJob {
 public:
  /// @param job  must outlive this; of the image's width and height
  BandJob(const Job& job, int width, int height);

  /// Whether the operation can be run directly on what the codec delivers: 3-byte pixels that it
  /// crosses.
  bool takesCodecPixels() const;
  /// Allocates and sets what the transcoder has to know of the job. Unless `codecPixels`, bands
  /// have B, G, R, A pixels and may be in place, except with a halo. Returns whether there was
  /// memory.
  bool prepare(JpegBandOptions& options, bool codecPixels);
  /// False when the job is cancelled.
  bool run(const JpegBand& band);

 private:
  void runDirectly(const JpegBand& band);
  void runRows(int first, int count, const Image& src, const JpegBand& band);

  const Job& job_;
  const JobPictures pictures_;
  const int width_, height_;
  bool direct_ = false;  ///< runs on the codec's pixels
  int stepRows_ = 0;
  std::optional<JobRows> rows_;
  std::optional<SoftLightImage> softLight_;
};

}  // namespace alg
