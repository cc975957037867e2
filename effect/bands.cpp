#include "effect/bands.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "base/block.h"
#include "base/image_size.h"
#include "effect/strip_effect.h"
#include "libalgorithm/yuv_convert.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

// A band should stay in the first-level cache beside its rows of the frame.
constexpr std::ptrdiff_t kBandBytes = std::ptrdiff_t{24} * 1024;

/// One strip with what its task needs.
class BandedStrip {
 public:
  BandedStrip(const YuvStripDesc& frame, const RgbStripDesc& strip)
      : frame_(frame), effect_(strip) {
    const std::ptrdiff_t pairBytes = std::ptrdiff_t{2} * kPackedBytes * frame.width;
    const auto pairs = std::max<std::ptrdiff_t>(1, kBandBytes / pairBytes);
    bandRows_ = static_cast<int>(std::min<std::ptrdiff_t>(2 * pairs, frame.rows));
    band_ = allocateBlock(static_cast<std::size_t>(std::max(1, bandRows_)) *
                          static_cast<std::size_t>(pairBytes / 2));
  }

  bool ready() const { return band_ != nullptr && effect_.ready(); }

  void run() {
    for (int row = 0; row < frame_.rows; row += bandRows_) {
      const int rows = std::min(bandRows_, frame_.rows - row);
      uint8_t* const y = frame_.y + std::ptrdiff_t{row} * frame_.yStride;
      uint8_t* const uv = frame_.uv + std::ptrdiff_t{row / 2} * frame_.uvStride;
      decodeYUV2ARGB_jni(band_.get(), y, uv, frame_.width, rows, frame_.yStride, frame_.uvStride);
      effect_.mapRows(band_.get(), band_.get(), row, rows);
      decodeARGB2YUV_jni(band_.get(), y, uv, frame_.width, rows, frame_.yStride, frame_.uvStride);
    }
  }

 private:
  YuvStripDesc frame_;
  StripEffect effect_;
  Block band_;
  int bandRows_;  // even
};

void runStrip(const void* /*input*/, const void* /*param*/, void* output) {
  static_cast<BandedStrip*>(output)->run();
}

}  // namespace

bool bandsFit(const Frame& frame) {
  return frame.width % 2 == 0 && frame.height % 2 == 0 && frame.uvStride == frame.width;
}

bool runBands(const char* effectName, const Frame& frame) {
  const EffectOfRun found(effectName, frame.width, frame.height);
  const EffectTypeInfo& effect = found.info();
  std::optional<BandedStrip> strips[kStrips];
  tagT_ThreadPoolTaskInput records[kStrips] = {};
  for (int i = 0; i < kStrips; ++i) {
    const Strip strip = stripOf(frame.height, kStrips, i);
    RgbStripDesc rgb = rgbStrip(frame, strip, nullptr);
    addEffect(rgb, effect, i % effect.stripCount);  // of one strip: those that pass frames through
    strips[i].emplace(yuvStrip(frame, strip), rgb);
    if (!strips[i]->ready()) {
      return false;
    }
    records[i].output = &*strips[i];
  }
  runOnPool(kStrips, runStrip, records);
  return true;
}

}  // namespace alg
