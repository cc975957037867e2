// Soft-light blending of packed 3-byte pixels with an overlay picture, and the effects made of it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/curve_map.h"
#include "kernels/stretched_rows.h"

namespace alg {

/// An overlay picture: 4 bytes a pixel (R, G, B, A; alpha is not read), rows packed.
struct Overlay {
  const uint8_t* pixels;
  int width;
  int height;
};

/// What comes before or after the blend. Both store pixels crossed: byte k of a source pixel, which
/// meets byte k of the overlay pixel, ends at byte 2 - k.
struct SoftLightEffect {
  enum class Order : uint8_t {
    kCurvesThenBlend,
    kPinkThenBlendThenCurves,  // pinkShift() comes first
  };
  Order order;
  Curves curves;
};

/// How much pink pulls byte 0 of a pixel up and the others down: positive below 128, negative
/// above, -13..12.
constexpr int pinkShift(int v) { return ((v - 128) * v * (v - 255)) >> 16; }

/// An effect on an image of width x height pixels (or a strip of one), over all of which the
/// overlay is stretched by nearest neighbour. Rows come in parts of any size; an overlay row is
/// stretched once for all image rows it meets, as long as they come one after the other. Holds work
/// memory for a few rows; one thread at a time.
class SoftLightImage {
 public:
  /// The effect and the overlay's pixels must outlive this.
  SoftLightImage(const SoftLightEffect& effect, const Overlay& overlay, int width, int height);

  /// Whether work memory for the rows was allocated, if there are any.
  bool ready() const { return rows_.any() || empty_; }

  /// Does rows firstRow..firstRow + rows - 1 of the image, src and dst pointing at the first of
  /// them. Pixels go in memory order, each read whole before it is written, so that src and dst may
  /// overlap in any way. Does nothing when a size of the image or the overlay is below 1 or work
  /// memory was short.
  void mapRows(const uint8_t* src, uint8_t* dst, int firstRow, int rows);

  /// Goes on to another image (or strip) of the same width, under an overlay of the same size.
  void moveTo(const uint8_t* overlay, int height);

 private:
  const SoftLightEffect& effect_;
  const uint8_t* overlay_;
  const int width_;
  const bool empty_;    // a size is below 1
  StretchedRows rows_;  // crossed where they meet pixels that are crossed already
};

/// The whole image at once.
void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightEffect& effect);

/// dst[i] = src[i] blended with overlay[i]: unchanged at 128, lighter above, darker below. dst must
/// not feed back into src (kernels/overlap.h), nor overlap the overlay.
void softLightBytes(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t bytes);

/// The same with packed pixels that are turned to pink first.
void pinkLightPixels(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t pixels);

/// The definitions.
void softLightBytesPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                         std::size_t bytes);
void pinkLightPixelsPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                          std::size_t pixels);

// The effects of the Pretty filters (overlay_filters.cpp), built at first use.
const SoftLightEffect& japanEffect();
const SoftLightEffect& pinkEffect();
/// PrettyBeautiful looks at no overlay: it is these curves.
const Curves& beautifulCurves();

}  // namespace alg
