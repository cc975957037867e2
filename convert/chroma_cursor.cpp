#include "convert/chroma_cursor.h"

namespace alg {

ChromaCursor::ChromaCursor(int width, int height, int uvStride, Direction direction)
    : rowBytes((static_cast<std::size_t>(width) + 1) & ~std::size_t{1}),
      planeBytes(uvStride < 1
                     ? 0
                     : static_cast<std::size_t>(height) * static_cast<std::size_t>(uvStride) / 2),
      stride(uvStride < 1 ? 1 : static_cast<std::size_t>(uvStride)),
      // Decoders skip from the width on, encoders only beyond it: callers depend on both.
      skipFrom(static_cast<std::size_t>(width) + (direction == Direction::kEncode ? 1 : 0)),
      skipBytes(uvStride > width ? static_cast<std::size_t>(uvStride - width) : 0),
      skips(uvStride > width),
      bounded(width % 2 != 0 || height % 2 != 0) {}

std::size_t ChromaCursor::next() {
  const std::size_t pair = position;
  if (skips && (pair + 1) % stride >= skipFrom) {
    position += skipBytes;
  }
  position += 2;
  return pair;
}

std::optional<std::size_t> ChromaCursor::nearestInside(std::size_t offset) const {
  if (inside(offset)) {
    return offset;
  }
  const std::size_t blockRows = (offset - planeBytes) / rowBytes + 1;
  if (offset < blockRows * rowBytes) {
    return std::nullopt;
  }
  return offset - blockRows * rowBytes;
}

}  // namespace alg
