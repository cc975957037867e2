// The walk of the conversions through a semi-planar chroma plane.
#pragma once

#include <cstddef>
#include <optional>

namespace alg {

/// One pass over the chroma plane of a width x height image, a pair per 2 x 2 block. Sizes are at
/// least 1.
class ChromaCursor {
 public:
  enum class Direction { kDecode, kEncode };

  ChromaCursor(int width, int height, int uvStride, Direction direction);

  /// Whether each block row's pairs simply follow those of the one before, all inside the plane.
  bool contiguous() const { return !skips && !bounded; }

  /// Offset of the current pair from the plane's start; moves on to the next.
  std::size_t next();

  /// Whether the sample at an offset belongs to the plane.
  bool inside(std::size_t offset) const { return !bounded || offset < planeBytes; }

  /// The nearest sample inside at or above an offset, a block row at a time; none in an empty
  /// plane.
  std::optional<std::size_t> nearestInside(std::size_t offset) const;

 private:
  std::size_t rowBytes;    // bytes of pairs that a block row takes
  std::size_t planeBytes;  // where the plane ends; heeded for odd sizes only
  std::size_t stride;
  std::size_t skipFrom;  // remainder from which on the cursor skips
  std::size_t skipBytes;
  std::size_t position = 0;
  bool skips;
  bool bounded;
};

}  // namespace alg
