#include "pretty/soft_light.h"

#include <algorithm>
#include <cmath>

#include "base/image_size.h"
#include "kernels/overlap.h"

namespace alg {
namespace {

// How far a value can move at most, before the overlay's share: down in 1/65536, up in 1/256.
struct Gains {
  int32_t low[256];
  int32_t high[256];
};

const Gains& gains() {
  static const Gains kGains = [] {
    Gains g;
    for (int v = 0; v < 256; ++v) {
      g.low[v] = v * (256 - v);
      const auto x = static_cast<float>(v / 255.0);
      const float rise = std::sqrt(x) - x;
      g.high[v] = static_cast<int32_t>(rise * 255.0);
    }
    return g;
  }();
  return kGains;
}

/// Stays within 0..255.
uint8_t blend(const Gains& g, int c, uint8_t o) {
  const int share = 2 * o - 255;
  const int change = o <= 127 ? (share * g.low[c]) >> 16 : (share * g.high[c]) >> 8;
  return static_cast<uint8_t>(c + change);
}

}  // namespace

void softLightBytesPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                         std::size_t bytes) {
  const Gains& g = gains();
  for (std::size_t i = 0; i < bytes; ++i) {
    dst[i] = blend(g, src[i], overlay[i]);
  }
}

void pinkLightPixelsPlain(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                          std::size_t pixels) {
  const Gains& g = gains();
  for (std::size_t i = 0; i < pixels * kPackedBytes; i += kPackedBytes) {
    const uint8_t pixel[kPackedBytes] = {src[i], src[i + 1], src[i + 2]};
    dst[i] = blend(g, pixel[0] + pinkShift(pixel[0]), overlay[i]);
    dst[i + 1] = blend(g, pixel[1] - pinkShift(pixel[1]), overlay[i + 1]);
    dst[i + 2] = blend(g, pixel[2] - pinkShift(pixel[2]), overlay[i + 2]);
  }
}

SoftLightImage::SoftLightImage(const SoftLightEffect& effect, const Overlay& overlay, int width,
                               int height)
    : effect_(effect),
      overlay_(overlay.pixels),
      width_(width),
      empty_(width < 1 || height < 1 || overlay.width < 1 || overlay.height < 1),
      rows_(overlay.width, overlay.height, width, height,
            effect.order == SoftLightEffect::Order::kCurvesThenBlend
                ? StretchedPixels::kPackedCrossed
                : StretchedPixels::kPacked) {}

void SoftLightImage::mapRows(const uint8_t* src, uint8_t* dst, int firstRow, int rows) {
  if (!rows_.any() || rows < 1) {
    return;
  }
  const bool curvesFirst = effect_.order == SoftLightEffect::Order::kCurvesThenBlend;
  const auto map = [&](const uint8_t* from, uint8_t* to, int row, std::size_t x,
                       std::size_t pixels) {
    const uint8_t* overlay = rows_.row(overlay_, firstRow + row) + kPackedBytes * x;
    if (curvesFirst) {
      mapCurves(from, to, pixels, effect_.curves);
      softLightBytes(to, overlay, to, kPackedBytes * pixels);
    } else {
      pinkLightPixels(from, overlay, to, pixels);
      mapCurves(to, to, pixels, effect_.curves);
    }
  };
  forEachPiece(src, dst, width_, rows, map);
}

void SoftLightImage::moveTo(const uint8_t* overlay, int height) {
  overlay_ = overlay;
  rows_.restart(height);
}

void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightEffect& effect) {
  SoftLightImage(effect, overlay, width, height).mapRows(src, dst, 0, height);
}

}  // namespace alg
