// Turned, packed, resized and pasted images and frames, in any layout. All run on the calling
// thread; sources and destinations do not overlap.
#pragma once

#include "images/image.h"

namespace alg {

/// Quarter turns clockwise.
enum class Turn : uint8_t { kNone, kQuarter, kHalf, kThreeQuarters };

/// The size of dst is src's, with its sides exchanged for odd numbers of quarters. The bytes' order
/// becomes dst's.
bool turnImage(const Image& src, Turn turn, const Image& dst);

/// A plane of samples, one byte each.
struct SamplePlane {
  const uint8_t* samples = nullptr;
  std::ptrdiff_t rowStride = 0;
  std::ptrdiff_t pixelStride = 0;

  SamplePlane from(int x, int y) const {
    return {samples + y * rowStride + x * pixelStride, rowStride, pixelStride};
  }
};

/// A frame in three planes.
struct CameraPlanes {
  SamplePlane y, u, v;
};

/// Packs planes, of which dst has all samples, turned: dst's size is that of the planes, with its
/// sides exchanged for odd numbers of quarters. Where U and V are interleaved already, whole rows
/// are copied or turned.
/// Returns false, with nothing written, when there is no memory for some rows.
bool packFrame(const CameraPlanes& planes, Turn turn, const FrameImage& dst);

/// The planes of a frame.
CameraPlanes planesOf(const FrameImage& frame);

/// The colours that Resize() makes of packed rows; alpha becomes 255. Takes a copy of src if that
/// does not begin and step at multiples of 4 bytes; false when there is no memory for it.
bool resizeImage(const Image& src, const Image& dst);

/// Copies a rectangle that is inside both to the same place.
void pasteArea(const Image& src, const Image& dst, int left, int top, int width, int height);

}  // namespace alg
