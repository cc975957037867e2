// Row kernels of the resize: all four bytes of a 32-bit word are mixed alike. A mix of a and b is
// (a x (65535 - fraction) + b x fraction) >> 16, so that even of equal ones it is one less (or 0).
#pragma once

#include <cstdint>

namespace alg {

inline constexpr uint32_t kFraction = 0xFFFF;
inline constexpr uint32_t kHalfWay = 0x8000;
inline constexpr uint32_t kNoAlpha = 0x00FFFFFF;

/// Two bytes of a word, each in 32 bits of its own: 8-bit values times 16-bit weights can't carry
/// from one into the other.
constexpr uint64_t spreadBytes(uint32_t word) {
  return (uint64_t{word & 0xFF0000} << 16) | (word & 0xFF);
}

constexpr uint64_t mixSpread(uint64_t a, uint64_t b, uint32_t fraction) {
  constexpr uint64_t kTwoBytes = 0x000000FF000000FF;
  return ((a * (kFraction - fraction) + b * fraction) >> 16) & kTwoBytes;
}

constexpr uint32_t mixWords(uint32_t a, uint32_t b, uint32_t fraction) {
  const uint64_t even = mixSpread(spreadBytes(a), spreadBytes(b), fraction);
  const uint64_t odd = mixSpread(spreadBytes(a >> 8), spreadBytes(b >> 8), fraction);
  const uint64_t mixed = even | (odd << 8);
  return static_cast<uint32_t>(mixed | (mixed >> 16));
}

/// For each column of the destination: its column of the source, and how much of the way to the
/// next one it is, in 65536ths, in both halves of a word.
struct ResizeColumns {
  const int32_t* index = nullptr;
  const uint32_t* fractions = nullptr;
  int count = 0;
  int sourceWidth = 0;
  int paired = 0;    // the leading columns for which index never falls and index + 1 is in the row
  int reach = 0;     // any n neighbours among these are reach x n source columns at most; 0: more
  int32_t step = 0;  // between two of these, in 65536ths of a source column; the first one is 0

  /// The columns from `first` on, for the definitions: without what only the twins ask for.
  ResizeColumns from(int first) const {
    return {.index = index + first,
            .fractions = fractions + first,
            .count = count - first,
            .sourceWidth = sourceWidth};
  }
};

/// out[i] = mix of row[index[i]] and the word behind it; `end` is the one behind the row's last.
void mixColumns(const uint32_t* row, uint32_t end, const ResizeColumns& columns, uint32_t* out);
void mixColumnsPlain(const uint32_t* row, uint32_t end, const ResizeColumns& columns,
                     uint32_t* out);

/// out[i] = mix of top[i] and bottom[i], with a highest byte of 0. `out` may be `top`.
void mixRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
             uint32_t* out);
void mixRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
                  uint32_t* out);

/// The same for top[index[i]] and bottom[index[i]], each mixed with itself before.
void takeRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
              const ResizeColumns& columns, uint32_t* out);
void takeRowsPlain(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
                   const ResizeColumns& columns, uint32_t* out);

}  // namespace alg
