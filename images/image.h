// Images and frames in memory of any layout.
#pragma once

#include <cstddef>
#include <cstdint>

#include "images/pixel_rows.h"

namespace alg {

/// 4-byte pixels, R, G, B, A or B, G, R, A. What is between rows belongs to others.
struct Image {
  uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  std::ptrdiff_t stride = 0;  ///< bytes from a row to the next
  bool redFirst = false;

  uint8_t* row(int y) const { return pixels + y * stride; }
  /// Some of its rows.
  Image rows(int first, int count) const { return {row(first), width, count, stride, redFirst}; }
  std::size_t rowBytes() const { return 4 * static_cast<std::size_t>(width); }
  bool isPacked() const { return stride == static_cast<std::ptrdiff_t>(rowBytes()); }
  /// What becomes of bytes 0 and 2 on the way to another image.
  ByteOrder orderTo(const Image& other) const {
    return redFirst == other.redFirst ? ByteOrder::kKept : ByteOrder::kExchanged;
  }
};

/// A semi-planar YUV 4:2:0 frame with even sides, NV12 or NV21.
struct FrameImage {
  uint8_t* luma = nullptr;
  uint8_t* chroma = nullptr;
  int width = 0;
  int height = 0;
  std::ptrdiff_t lumaStride = 0;
  std::ptrdiff_t chromaStride = 0;
  bool vFirst = false;

  /// Some of its rows, an even number from an even one on.
  FrameImage rows(int first, int count) const {
    return {luma + first * lumaStride,
            chroma + first / 2 * chromaStride,
            width,
            count,
            lumaStride,
            chromaStride,
            vFirst};
  }
};

}  // namespace alg
