// How the conversions step through a semi-planar chroma plane.
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

  /// Whether the sample at an offset is inside the plane.
  bool inside(std::size_t offset) const { return !bounded || offset < planeBytes; }

  /// The offset itself when it is inside the plane, else the nearest one inside that lies a whole
  /// number of block rows above; none when there is no such row.
  std::optional<std::size_t> nearestInside(std::size_t offset) const;

 private:
  std::size_t rowBytes;    // bytes of pairs that a block row takes
  std::size_t planeBytes;  // where the plane ends; checked for odd sizes only
  std::size_t stride;
  std::size_t skipFrom;  // remainder from which the cursor skips
  std::size_t skipBytes;
  std::size_t position = 0;
  bool skips;
  bool bounded;
};

}  // namespace alg
