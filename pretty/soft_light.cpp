#include "pretty/soft_light.h"

#include <cmath>
#include <cstddef>

#include "base/image_size.h"
#include "kernels/nearest_steps.h"

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

uint8_t blend(const Gains& g, uint8_t c, uint8_t o) {
  const int share = 2 * o - 255;
  const int change = o <= 127 ? (share * g.low[c]) >> 16 : (share * g.high[c]) >> 8;
  return static_cast<uint8_t>(c + change);
}

}  // namespace

uint8_t softLight(uint8_t c, uint8_t o) { return blend(gains(), c, o); }

void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightCurves& curves) {
  if (width < 1 || height < 1 || overlay.width < 1 || overlay.height < 1) {
    return;
  }
  const Gains& g = gains();
  const std::size_t overlayPitch = std::size_t{4} * static_cast<std::size_t>(overlay.width);
  NearestSteps row(overlay.height, height);
  for (int j = 0; j < height; ++j, row.advance()) {
    const uint8_t* overlayRow =
        overlay.pixels + overlayPitch * static_cast<std::size_t>(row.index());
    NearestSteps column(overlay.width, width);
    for (int i = 0; i < width; ++i, column.advance(), src += kPackedBytes, dst += kPackedBytes) {
      const uint8_t* o = overlayRow + std::ptrdiff_t{4} * column.index();
      const uint8_t x0 = blend(g, curves.before[0][src[0]], o[0]);
      const uint8_t x1 = blend(g, curves.before[1][src[1]], o[1]);
      const uint8_t x2 = blend(g, curves.before[2][src[2]], o[2]);
      dst[0] = curves.after[x2];
      dst[1] = curves.after[x1];
      dst[2] = curves.after[x0];
    }
  }
}

}  // namespace alg
