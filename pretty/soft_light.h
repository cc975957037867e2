// Soft-light blending of packed 3-byte pixels with an overlay picture, and the effects made of it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/block.h"
#include "kernels/curve_map.h"

namespace alg {

/// An overlay picture: 4 bytes a pixel (R, G, B, A; alpha is not read), rows packed.
struct Overlay {
  const uint8_t* pixels;
  int width;
  int height;
};

/// c blended with o: unchanged at o = 128, lighter above, darker below; stays within 0..255.
uint8_t softLight(uint8_t c, uint8_t o);

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

/// Four columns of the image: they meet four neighbouring overlay pixels at most when the overlay
/// is not wider.
struct StretchedQuad {
  uint8_t bytes[16];  // from where each of the 12 bytes of the packed pixels comes; 4 unused
  uint32_t offset;    // in bytes, of the 16 bytes of the overlay row they come from
};
inline constexpr int kQuadBytes = 12;
inline constexpr std::size_t kStretchSlack = 4;

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

  /// Whether work memory for the rows could be had.
  bool ready() const { return work_ != nullptr || nothingToDo(); }

  /// Does rows firstRow..firstRow + rows - 1 of the image, src and dst pointing at the first of
  /// them. Pixels go in memory order, each read whole before it is written, so that src and dst may
  /// overlap in any way. Does nothing when a size of the image or the overlay is below 1 or work
  /// memory was short.
  void mapRows(const uint8_t* src, uint8_t* dst, int firstRow, int rows);

 private:
  bool nothingToDo() const {
    return width_ < 1 || height_ < 1 || overlay_.width < 1 || overlay_.height < 1;
  }
  void fillQuads();
  const uint8_t* stretchedRow(int imageRow);

  const SoftLightEffect& effect_;
  const Overlay overlay_;
  const int width_, height_;
  const bool crossed_;  // the overlay meets pixels that are crossed already
  Block work_;          // quads_, then stretched_
  StretchedQuad* quads_ = nullptr;
  std::size_t quadCount_ = 0;
  uint8_t* stretched_ = nullptr;
  int64_t stretchedFrom_ = -1;  // overlay row
};

/// The whole image at once.
void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightEffect& effect);

/// dst[i] = softLight(src[i], overlay[i]). dst must not start within src's bytes behind the first
/// (dst <= src is fine), nor overlap the overlay.
void softLightBytes(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t bytes);

/// The same with packed pixels that are turned to pink first.
void pinkLightPixels(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t pixels);

/// Writes kQuadBytes bytes for each quad, and kStretchSlack behind the last one.
void stretchQuads(const uint8_t* overlayRow, const StretchedQuad* quads, std::size_t count,
                  uint8_t* to);

/// The definitions.
void softLightBytesPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                         std::size_t bytes);
void pinkLightPixelsPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                          std::size_t pixels);
void stretchQuadsPlain(const uint8_t* overlayRow, const StretchedQuad* quads, std::size_t count,
                       uint8_t* to);

// The effects of the Pretty filters (overlay_filters.cpp), built at first use.
const SoftLightEffect& japanEffect();
const SoftLightEffect& pinkEffect();
/// PrettyBeautiful looks at no overlay: it is these curves.
const Curves& beautifulCurves();

}  // namespace alg
