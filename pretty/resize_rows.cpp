// The definitions of the resize's row kernels.
#include "pretty/resize_rows.h"

namespace alg {

void mixColumnsPlain(const uint32_t* row, uint32_t end, const ResizeColumns& columns,
                     uint32_t* out) {
  for (int i = 0; i < columns.count; ++i) {
    const int x = columns.index[i];
    const uint32_t next = x + 1 < columns.sourceWidth ? row[x + 1] : end;
    out[i] = mixWords(row[x], next, columns.fractions[i] & kFraction);
  }
}

void mixRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
                  uint32_t* out) {
  for (int i = 0; i < count; ++i) {
    out[i] = mixWords(top[i], bottom[i], fraction) & kNoAlpha;
  }
}

void takeRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
                   const ResizeColumns& columns, uint32_t* out) {
  for (int i = 0; i < columns.count; ++i) {
    const uint32_t upper = top[columns.index[i]];
    const uint32_t lower = bottom[columns.index[i]];
    out[i] = mixWords(mixWords(upper, upper, 0), mixWords(lower, lower, 0), fraction) & kNoAlpha;
  }
}

}  // namespace alg
