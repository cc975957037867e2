// Sizes as users write them.
#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include "base/image_size.h"

namespace alg::tool {

struct Size {
  int width;
  int height;

  std::size_t pixels() const { return pixelCount(width, height); }
};

/// What a JPEG can hold.
inline constexpr int kLongestJpegSide = 65500;
/// The longest side that resizing takes: positions in longer ones wrap around.
inline constexpr int kLongestSide = 32767;

/// Parses "WIDTHxHEIGHT" of a --size option; the ARGB pixels fit into 2^31 - 1 bytes. Throws
/// WrongUse.
Size parseSize(const std::string& text, int longestSide = std::numeric_limits<int>::max());
/// As parseSize(), of a frame, which has even sides.
Size parseFrameSize(const std::string& text, int longestSide = std::numeric_limits<int>::max());

}  // namespace alg::tool
