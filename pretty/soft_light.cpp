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

/// Column by column; for overlays that are wider than the image or very narrow.
void stretchSlowly(const uint8_t* overlayRow, int overlayWidth, int width, bool reversed,
                   uint8_t* to) {
  NearestSteps column(overlayWidth, width);
  for (int i = 0; i < width; ++i, column.advance(), to += kPackedBytes) {
    const uint8_t* pixel = overlayRow + std::ptrdiff_t{4} * column.index();
    to[0] = pixel[reversed ? 2 : 0];
    to[1] = pixel[1];
    to[2] = pixel[reversed ? 0 : 2];
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

void stretchQuadsPlain(const uint8_t* overlayRow, const StretchedQuad* quads, std::size_t count,
                       uint8_t* to) {
  for (const StretchedQuad* quad = quads; quad != quads + count; ++quad, to += kQuadBytes) {
    for (int i = 0; i < kQuadBytes; ++i) {
      to[i] = overlayRow[quad->offset + quad->bytes[i]];
    }
  }
}

SoftLightImage::SoftLightImage(const SoftLightEffect& effect, const Overlay& overlay, int width,
                               int height)
    : effect_(effect),
      overlay_(overlay),
      width_(width),
      height_(height),
      crossed_(effect.order == SoftLightEffect::Order::kCurvesThenBlend) {
  if (nothingToDo()) {
    return;
  }
  const std::size_t quads = (static_cast<std::size_t>(width) + 3) / 4;
  const bool inQuads = overlay.width >= 4 && overlay.width <= width;
  const std::size_t stretchedBytes = kQuadBytes * quads + kStretchSlack;
  work_ = allocateBlock((inQuads ? sizeof(StretchedQuad) * quads : 0) + stretchedBytes);
  if (!work_) {
    return;
  }
  stretched_ = work_.get();
  if (inQuads) {
    quads_ = reinterpret_cast<StretchedQuad*>(work_.get());
    quadCount_ = quads;
    stretched_ += sizeof(StretchedQuad) * quads;
    fillQuads();
  }
}

void SoftLightImage::fillQuads() {
  NearestSteps column(overlay_.width, width_);
  const int last = overlay_.width - 1;
  for (std::size_t i = 0; i < quadCount_; ++i) {
    const int first = std::min(column.index(), overlay_.width - 4);
    StretchedQuad& quad = quads_[i];
    quad = {};
    quad.offset = uint32_t{4} * static_cast<uint32_t>(first);
    for (int k = 0; k < kQuadBytes; k += kPackedBytes, column.advance()) {
      const int byte = 4 * (std::min(column.index(), last) - first);
      quad.bytes[k] = static_cast<uint8_t>(byte + (crossed_ ? 2 : 0));
      quad.bytes[k + 1] = static_cast<uint8_t>(byte + 1);
      quad.bytes[k + 2] = static_cast<uint8_t>(byte + (crossed_ ? 0 : 2));
    }
  }
}

const uint8_t* SoftLightImage::stretchedRow(int imageRow) {
  const int64_t row = int64_t{imageRow} * overlay_.height / height_;
  if (row != stretchedFrom_) {
    stretchedFrom_ = row;
    const uint8_t* overlayRow = overlay_.pixels + std::ptrdiff_t{4} * overlay_.width * row;
    if (quads_ != nullptr) {
      stretchQuads(overlayRow, quads_, quadCount_, stretched_);
    } else {
      stretchSlowly(overlayRow, overlay_.width, width_, crossed_, stretched_);
    }
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
      if (crossed_) {
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
