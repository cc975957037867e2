#include "pretty/soft_light.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

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

uint8_t blend(const Gains& g, int c, uint8_t o) {
  const int share = 2 * o - 255;
  const int change = o <= 127 ? (share * g.low[c]) >> 16 : (share * g.high[c]) >> 8;
  return static_cast<uint8_t>(c + change);
}

/// How many pixels can be done at a time, so that none of them is read after one was written: a
/// destination that starts inside the source feeds results back into pixels still to be read.
std::size_t pixelsAtATime(const uint8_t* src, const uint8_t* dst, std::size_t pixels) {
  const std::less<> before;
  if (before(src, dst) && before(dst, src + kPackedBytes * pixels)) {
    return std::max(static_cast<std::size_t>(dst - src) / kPackedBytes, std::size_t{1});
  }
  return pixels;
}

/// Copies the first three bytes of the pixel at each offset, for crossed results in reverse. Whole
/// words move: each store's fourth byte is overwritten by the next, the last one's lies behind.
template <bool kReversed>
void stretch(const uint8_t* overlayRow, const uint32_t* offsets, std::size_t pixels, uint8_t* to) {
  for (std::size_t i = 0; i < pixels; ++i, to += kPackedBytes) {
    uint32_t pixel;
    std::memcpy(&pixel, overlayRow + offsets[i], sizeof(pixel));
    if constexpr (kReversed) {
      pixel = __builtin_bswap32(pixel) >> 8;
    }
    std::memcpy(to, &pixel, sizeof(pixel));
  }
}

}  // namespace

uint8_t softLight(uint8_t c, uint8_t o) { return blend(gains(), c, o); }

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
    : effect_(effect), overlay_(overlay), width_(width), height_(height) {
  if (nothingToDo()) {
    return;
  }
  const auto columns = static_cast<std::size_t>(width);
  work_ = allocateBlock((sizeof(uint32_t) + kPackedBytes) * columns + 1);
  if (!work_) {
    return;
  }
  offsets_ = reinterpret_cast<uint32_t*>(work_.get());
  stretched_ = work_.get() + sizeof(uint32_t) * columns;
  NearestSteps column(overlay.width, width);
  for (std::size_t i = 0; i < columns; ++i, column.advance()) {
    offsets_[i] = uint32_t{4} * static_cast<uint32_t>(column.index());
  }
}

const uint8_t* SoftLightImage::stretchedRow(int imageRow) {
  const int64_t row = int64_t{imageRow} * overlay_.height / height_;
  if (row != stretchedFrom_) {
    stretchedFrom_ = row;
    const bool crossed = effect_.order == SoftLightEffect::Order::kCurvesThenBlend;
    (crossed ? stretch<true>
             : stretch<false>)(overlay_.pixels + std::ptrdiff_t{4} * overlay_.width * row, offsets_,
                               static_cast<std::size_t>(width_), stretched_);
  }
  return stretched_;
}

void SoftLightImage::mapRows(const uint8_t* src, uint8_t* dst, int firstRow, int rows) {
  if (!work_ || rows < 1) {
    return;
  }
  const auto width = static_cast<std::size_t>(width_);
  const std::size_t block = pixelsAtATime(src, dst, width * static_cast<std::size_t>(rows));
  for (int row = firstRow; row < firstRow + rows; ++row) {
    const uint8_t* overlay = stretchedRow(row);
    for (std::size_t done = 0; done < width;) {
      const std::size_t pixels = std::min(block, width - done);
      const std::size_t bytes = kPackedBytes * pixels;
      if (effect_.order == SoftLightEffect::Order::kCurvesThenBlend) {
        mapCurves(src, dst, pixels, effect_.curves);
        softLightBytes(dst, overlay, dst, bytes);
      } else {
        pinkLightPixels(src, overlay, dst, pixels);
        mapCurves(dst, dst, pixels, effect_.curves);
      }
      done += pixels;
      src += bytes;
      dst += bytes;
      overlay += bytes;
    }
  }
}

void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightEffect& effect) {
  SoftLightImage(effect, overlay, width, height).mapRows(src, dst, 0, height);
}

}  // namespace alg
