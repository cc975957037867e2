// The definitions of transpose and mirror.
#include "camerautil/turn_rows.h"

#include <cstring>

namespace alg {

void transposePlain(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
                    int columns, int rows, bool /*stream*/) {
  for (int k = 0; k < columns; ++k) {
    const std::size_t offset = elementBytes * static_cast<std::size_t>(k);
    uint8_t* to = dst.row(k);
    for (int x = 0; x < rows; ++x, to += elementBytes) {
      std::memcpy(to, src.row(x) + offset, elementBytes);
    }
  }
}

void mirrorPlain(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count,
                 bool /*stream*/) {
  const uint8_t* from = src + elementBytes * count;
  for (std::size_t i = 0; i < count; ++i, dst += elementBytes) {
    from -= elementBytes;
    std::memcpy(dst, from, elementBytes);
  }
}

}  // namespace alg
