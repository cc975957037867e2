// Row kernels of the resize: all four bytes of a 32-bit word are mixed alike. A mix of a and b is
// (a x (65535 - fraction) + b x fraction) >> 16, so that even of equal ones it is one less (or 0).
#pragma once

#include <cstdint>

namespace alg {

/// For each column of the destination its column of the source and how far the way to the next one
/// is gone, in 65536ths, in both halves of a word.
struct ResizeColumns {
  const int32_t* index;
  const uint32_t* fractions;
  int count;
  int sourceWidth;
  int paired;  // so many columns from the left: index never falls, and index + 1 is in the row, too
  int reach;   // any n neighbours among these lie within reach x n source columns; 0: farther apart
};

/// out[i] = mix of row[index[i]] and the word behind it; `end` is the one behind the row's last.
void mixColumns(const uint32_t* row, uint32_t end, const ResizeColumns& columns, uint32_t* out);
void mixColumnsPlain(const uint32_t* row, uint32_t end, const ResizeColumns& columns, int from,
                     uint32_t* out);

/// out[i] = mix of top[i] and bottom[i], with a highest byte of 0. `out` may be `top`.
void mixRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
             uint32_t* out);
void mixRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int from,
                  int count, uint32_t* out);

/// The same for top[index[i]] and bottom[index[i]], each mixed with itself before.
void takeRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
              const ResizeColumns& columns, uint32_t* out);
void takeRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
                   const ResizeColumns& columns, int from, uint32_t* out);

}  // namespace alg
