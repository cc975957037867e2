// Row kernels of the box blur. Work rows have three bytes or sums to a pixel, whatever the picture
// has. Ring rows and column sums are kept run by run, each run in whole blocks of its own, so that
// kernels may go on to the end of a block.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/box_blur.h"

namespace alg {

inline constexpr std::size_t kBlurElements = 3;  // of a pixel
inline constexpr std::size_t kBlurBlock = 64;    // elements; every vector has a part of that

/// Rounded up to blocks.
constexpr std::size_t wholeBlocks(std::size_t elements) {
  return (elements + kBlurBlock - 1) / kBlurBlock * kBlurBlock;
}

/// Neighbouring columns of equal radius.
struct BlurRun {
  std::size_t begin = 0, count = 0;  // elements in a row of pixels
  std::size_t at = 0;  // where they are in ring rows and column sums: a multiple of kBlurBlock
  int radius = 0;      // pixels
  std::size_t entering = 0, leaving = 0;  // elements of the ring before the two rows of this step
};

/// (sum x trunc(65536 / n)) >> 16 with factors of 16 bits, which suit vectors. The 65536 for n = 1
/// has 17: there it is twice the sum by 32768.
struct LineMean {
  uint16_t scale, reciprocal;

  uint8_t of(int sum) const {
    const auto scaled = static_cast<uint16_t>(sum * scale);
    return static_cast<uint8_t>((uint32_t{scaled} * reciprocal) >> 16);
  }
};

// By radius. Values that come from a table of this width are what lets GCC multiply 16 bits by 16.
struct BlurMeans {
  LineMean line[kMaxBlurPeak + 1];
  uint32_t square[kMaxBlurPeak + 1];  // trunc(65536 / n)
};

inline constexpr BlurMeans kBlurMeans = [] {
  BlurMeans means{};
  for (int r = 0; r <= kMaxBlurPeak; ++r) {
    const int side = 2 * r + 1;
    means.line[r] =
        r == 0 ? LineMean{2, 0x8000} : LineMean{1, static_cast<uint16_t>(0x10000 / side)};
    means.square[r] = 0x10000 / static_cast<uint32_t>(side * side + 4);
  }
  return means;
}();

// The kernels. What lies behind the last element, up to a block in work rows, is left undefined.

/// Prefix sums of a row of pixels go on behind prefix[0..2], wrapping at 16 bits.
void sumUp(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix);
void sumUpPlain(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix);

/// Boxes across, from the prefix sums before pixel 0 and on: their means.
void meansAcross(const BlurRun* runs, int runCount, const uint16_t* prefix, uint8_t* row);
void meansAcrossPlain(const BlurRun* runs, int runCount, const uint16_t* prefix, uint8_t* row);

/// The same, but their sums.
void sumsAcross(const BlurRun* runs, int runCount, const uint16_t* prefix, uint16_t* row);
void sumsAcrossPlain(const BlurRun* runs, int runCount, const uint16_t* prefix, uint16_t* row);

/// Column sums take in one row of the ring and give up another; their means become bytes. Runs
/// are taken from left to right.
void finishMeans(const BlurRun* runs, int runCount, const uint8_t* ring, uint16_t* sums,
                 uint8_t* bytes);
void finishMeansPlain(const BlurRun* runs, int runCount, const uint8_t* ring, uint16_t* sums,
                      uint8_t* bytes);

// Whether twins keep the sums of squares in an order and a scale of their own, by the run's radius.
#ifdef __x86_64__
inline constexpr bool kOwnSquareSums = true;
#else
inline constexpr bool kOwnSquareSums = false;
#endif

/// Sums of squares, from the run's first column on, take in the same part of a row `weight` times.
void addSquares(const BlurRun& run, int weight, const uint16_t* row, uint32_t* sums);
void addSquaresPlain(const BlurRun& run, int weight, const uint16_t* row, uint32_t* sums);

/// The same as finishMeans for whole squares, with four more centres.
void finishSquares(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                   const uint8_t* centres, uint8_t* bytes);
void finishSquaresPlain(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                        const uint8_t* centres, uint8_t* bytes);

/// Words without their alpha.
void dropAlpha(const uint8_t* words, std::size_t width, uint8_t* bytes);
void dropAlphaPlain(const uint8_t* words, std::size_t width, uint8_t* bytes);

/// Words again, with an alpha of 0. With `stream` they go past the caches where that is possible;
/// endStream() then has to follow the last row.
void addAlpha(const uint8_t* bytes, std::size_t width, uint8_t* words, bool stream);
void addAlphaPlain(const uint8_t* bytes, std::size_t width, uint8_t* words, bool stream = false);
void endStream();

}  // namespace alg
