// How the rows of an image go from one place to another a band at a time, on one thread or two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "codec/jpeg_bands.h"
#include "platform/jpeg_format.h"

namespace alg {

/// The shape of the bands.
struct BandLayout {
  BandLayout(int imageWidth, int imageHeight, const JpegBandOptions& options);

  std::size_t bandBytes() const { return resultStride * static_cast<std::size_t>(rows); }

  int width, height;
  JpegPixels source, result;
  int halo;
  bool apart;  ///< source and result have buffers of their own
  std::size_t sourceStride, resultStride;
  bool overlap;
  int rows;  ///< of a band; the last one may have fewer
  int bands;
};

/// Where rows come from, packed, and where they go.
using ReadRows = std::function<JpegFault(uint8_t* to, int rows)>;
using WriteRows = std::function<JpegFault(const uint8_t* from, int rows)>;

/// Takes the rows from one place through work to another. Without a second thread, or memory for
/// it, the caller's does all.
JpegFault passRows(const ReadRows& read, const BandLayout& layout, const JpegBandWork& work,
                   const WriteRows& write);

}  // namespace alg
