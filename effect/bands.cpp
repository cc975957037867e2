#include "effect/bands.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/block.h"
#include "base/image_size.h"
#include "convert/frame_convert.h"
#include "effect/strip_effect.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

// A band should fit in the first-level cache together with its rows of the frame.
constexpr std::ptrdiff_t kBandBytes = std::ptrdiff_t{24} * 1024;

/// One strip and what its task needs.
class BandedStrip {
 public:
  BandedStrip(const Frame& rows, const Operation* operation, const PictureView& picture)
      : rows_(rows), effect_(operation, picture, rows.width, rows.height) {
    const std::ptrdiff_t pairBytes = std::ptrdiff_t{2} * kPackedBytes * rows.width;
    const auto pairs = std::max<std::ptrdiff_t>(1, kBandBytes / pairBytes);
    bandRows_ = static_cast<int>(std::min<std::ptrdiff_t>(2 * pairs, rows.height));
    band_ = allocateBlock(static_cast<std::size_t>(std::max(1, bandRows_)) *
                          static_cast<std::size_t>(pairBytes / 2));
  }

  bool ready() const { return band_ != nullptr && effect_.ready(); }

  void run() {
    for (int row = 0; row < rows_.height; row += bandRows_) {
      const Frame band = rowsOf(rows_, {row, std::min(bandRows_, rows_.height - row)});
      forEachPart(band, [](const Frame& part, uint8_t* pixels) {
        decodeFrame(RowFormat::kPackedUV, pixels, {part.y, part.uv, part.yStride, part.width},
                    part.width, part.height);
      });
      effect_.mapRows(band_.get(), band_.get(), row, band.height);
      forEachPart(band, [](const Frame& part, uint8_t* pixels) {
        encodeFrame(RowFormat::kPackedUV, pixels, {part.y, part.uv, part.yStride, part.width},
                    part.width, part.height);
      });
    }
  }

 private:
  /// Parts whose chroma has no padding: the whole band, or each of its chroma rows.
  template <class Convert>
  void forEachPart(const Frame& band, const Convert& convert) {
    const int rows = band.uvStride == band.width ? band.height : 2;
    for (int row = 0; row < band.height; row += rows) {
      convert(rowsOf(band, {row, std::min(rows, band.height - row)}),
              band_.get() + std::ptrdiff_t{kPackedBytes} * band.width * row);
    }
  }

  Frame rows_;
  StripEffect effect_;
  Block band_;
  int bandRows_;  // even
};

}  // namespace

bool bandsFit(const Frame& frame, bool truePadding) {
  return frame.width % 2 == 0 && frame.height % 2 == 0 &&
         (truePadding || frame.uvStride == frame.width);
}

bool runBands(const ChosenEffect& effect, const Frame& frame) {
  std::optional<BandedStrip> strips[kStrips];
  for (int i = 0; i < kStrips; ++i) {
    // Only effects that pass frames through have a single strip.
    strips[i].emplace(rowsOf(frame, stripOf(frame.height, kStrips, i)), effect.operation(),
                      bandOf(effect.picture(), effect.strips(), i % effect.strips()));
    if (!strips[i]->ready()) {
      return false;
    }
  }
  runOnPool(strips, [](std::optional<BandedStrip>& strip) { strip->run(); });
  return true;
}

}  // namespace alg
