// Frames, and the parts that they and their pictures are cut into.
#pragma once

#include <cstddef>
#include <cstdint>

#include "catalogue/operation.h"
#include "effect/strip_split.h"

namespace alg {

/// An NV21 frame in memory, or rows of one from an even row on, with its strides in bytes.
struct Frame {
  uint8_t* y;
  uint8_t* uv;
  int width;
  int height;
  int yStride;
  int uvStride;
};

/// The strips that the pipeline cuts a frame into; an effect has this many, or one.
inline constexpr int kStrips = 4;

/// Rows of a frame.
inline Frame rowsOf(const Frame& frame, const Strip& strip) {
  return {frame.y + std::ptrdiff_t{strip.firstRow} * frame.yStride,
          frame.uv + std::ptrdiff_t{strip.firstRow / 2} * frame.uvStride,
          frame.width,
          strip.rows,
          frame.yStride,
          frame.uvStride};
}

/// Band `index` of a picture that is cut into `count` bands of whole rows, independently of the
/// frame's strips. A band begins at index x (bytes / count), which is inside a row where the rows
/// don't divide evenly.
inline PictureView bandOf(const PictureView& picture, int count, int index) {
  if (picture.pixels == nullptr) {
    return {};
  }
  const auto bands = static_cast<uint32_t>(count);
  const auto bytes =
      4 * static_cast<uint32_t>(picture.width) * static_cast<uint32_t>(picture.height);
  return {picture.pixels + std::size_t{static_cast<uint32_t>(index)} * (bytes / bands),
          picture.width, static_cast<int>(static_cast<uint32_t>(picture.height) / bands)};
}

}  // namespace alg
