// Row kernels of the drawing effects. They look at windows of 3 x 3 pixels: row pointers are at the
// first window's left column, `count` windows follow one another. Rows of single bytes are padded
// (kRowPadding), those that are read and those that are written; packed pixels are not.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// grey[x] = 128 + 16 x (bottom right - top left of window x), limited to a byte.
void reliefRow(const uint8_t* top, const uint8_t* bottom, uint8_t* grey, std::size_t count);
void reliefRowPlain(const uint8_t* top, const uint8_t* bottom, uint8_t* grey, std::size_t count);

/// 255 minus the length of the gradient, in which all three rows and columns weigh the same, twice.
/// The length is rounded down, and limited to 255.
void lineRow(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
             std::size_t count);
void lineRowPlain(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
                  std::size_t count);

/// The rows of a window, each as the three planes of its pixels, `pitch` bytes apart.
struct PlaneWindow {
  const uint8_t *top, *middle, *bottom;
  std::ptrdiff_t pitch;

  PlaneWindow plane(int c) const {
    return {.top = top + c * pitch,
            .middle = middle + c * pitch,
            .bottom = bottom + c * pitch,
            .pitch = pitch};
  }
};

/// A falling function of a squared gradient whose steps are 1: its arguments plus kOffset are cut
/// into blocks of which none has more than one step, 64 to each power of two. As floats, they show
/// their block in the upper bits, and below them where in the block they are:
///
///     float     0 | exponent, and 6 bits of the mantissa | 17 bits, the lowest 3 of them 0
///     rank      bits 17 to 2, of which the highest is the same for all arguments of a block
///     entry     16 bits: the rank of the last argument before the step | 16 bits: value before it
struct EdgeSteps {
  static constexpr int kOffset = 1024;
  static constexpr int kBlockShift = 17;               // of a float's bits
  static constexpr int kRankShift = 2;                 // the same
  static constexpr int kFirstBlock = (127 + 10) << 6;  // of kOffset
  static constexpr int kStrongest = 350 * 350;         // nothing changes beyond
  static constexpr int kBlocks = 11 << 6;  // up to 2^21, which is beyond the greatest argument

  int32_t entries[kBlocks];
};

/// Each channel overlaid with its inverted Sobel edges; the channels are crossed on their way.
void inkRow(const PlaneWindow& rows, uint8_t* out, std::size_t count, const EdgeSteps& edges);
void inkRowPlain(const PlaneWindow& rows, uint8_t* out, std::size_t count, const EdgeSteps& edges);

/// Entry 3 x (a channel's brightest neighbour) + (the brightest of all channels' neighbours) is the
/// channel's factor modulo 256 in 23 fractional bits, in two parts whose products with a byte take
/// 16 bits:
///
///     entry   16 bits: in 8 fractional bits | 0 | 15 bits: the rest
struct CartoonFactors {
  static constexpr int kFineBits = 15;

  uint32_t entries[4 * 255 + 1];
};

/// Each channel times its factor, modulo 256; the channels are crossed on their way.
void cartoonRow(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                const CartoonFactors& factors);
void cartoonRowPlain(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                     const CartoonFactors& factors);

}  // namespace alg
