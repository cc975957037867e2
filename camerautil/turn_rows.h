// Turns of element grids: transpose and mirror. Every rotation is one of the two; directions come
// from the signs of the pitches.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// Rows of fixed-size elements; the pitch is in bytes and negative when rows go upwards.
template <class Byte>
struct Rows {
  Byte* first;
  std::ptrdiff_t pitch;
  Byte* row(int index) const { return first + pitch * index; }
};

/// Element x of destination row k becomes element k of source row x, for k < columns and x < rows;
/// elements of 1, 2 or 4 bytes move whole. The two don't overlap. `stream`: whether the destination
/// is written past the caches (base/streamed.h).
void transpose(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst, int columns,
               int rows, bool stream = false);
void transposePlain(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
                    int columns, int rows, bool stream = false);

/// Writes `count` elements of 1, 2 or 4 bytes in reverse order. The two don't overlap. `stream` as
/// above.
void mirror(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count,
            bool stream = false);
void mirrorPlain(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count,
                 bool stream = false);

}  // namespace alg
