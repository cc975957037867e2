#include "effect/phases.h"

#include <cstdlib>
#include <limits>
#include <optional>

#include "base/image_size.h"
#include "effect/strip_effect.h"
#include "libalgorithm/yuv_convert.h"
#include "threadpool/global_pool.h"

uint8_t* gCLAHE_Rgb_Buffer_in = nullptr;
uint8_t* gCLAHE_Rgb_Buffer_out = nullptr;

namespace alg {
namespace {

bool workImagesFit(const Frame& frame) {
  return int64_t{kPackedBytes} * frame.width * frame.height <= std::numeric_limits<int32_t>::max();
}

/// The work images, while a run needs them.
struct WorkImages {
  WorkImages(int width, int height) { fastcvPollInit(width, height); }
  ~WorkImages() { fastcvPollDestory(); }
  WorkImages(const WorkImages&) = delete;
  WorkImages& operator=(const WorkImages&) = delete;

  static bool ready() {
    return gCLAHE_Rgb_Buffer_in != nullptr && gCLAHE_Rgb_Buffer_out != nullptr;
  }
};

RgbStripDesc workStrip(const Frame& frame, const Strip& strip, uint8_t* workImage) {
  return rgbStrip(frame, strip,
                  workImage + std::size_t{kPackedBytes} * static_cast<std::size_t>(frame.width) *
                                  static_cast<std::size_t>(strip.firstRow));
}

/// EffectFunction(), with its work memory had before: all strips get the effect, or none.
void mapStrip(const void* input, const void* param, void* output) {
  const auto& in = *static_cast<const RgbStripDesc*>(param);
  const auto& out = *static_cast<const RgbStripDesc*>(output);
  auto& effect = *static_cast<StripEffect*>(const_cast<void*>(input));
  effect.mapRows(in.pixels, out.pixels, 0, in.rows);
}

}  // namespace

bool runPhases(const char* effectName, const Frame& frame) {
  if (!workImagesFit(frame)) {
    return false;
  }
  tagT_ThreadPoolTaskInput records[kStrips] = {};
  YuvStripDesc yuv[kStrips];
  RgbStripDesc in[kStrips];
  RgbStripDesc out[kStrips];
  std::optional<StripEffect> effects[kStrips];
  const WorkImages images(frame.width, frame.height);
  if (!WorkImages::ready()) {
    return false;
  }

  for (int i = 0; i < kStrips; ++i) {
    const Strip strip = stripOf(frame.height, kStrips, i);
    yuv[i] = yuvStrip(frame, strip);
    in[i] = workStrip(frame, strip, gCLAHE_Rgb_Buffer_in);
    records[i].input = &yuv[i];
    records[i].output = &in[i];
  }
  runOnPool(kStrips, YUV2RGB, records);

  const EffectTypeInfo effect = effectTypeInit(effectName, frame.width, frame.height);
  for (int i = 0; i < effect.stripCount; ++i) {
    const Strip strip = stripOf(frame.height, effect.stripCount, i);
    in[i] = workStrip(frame, strip, gCLAHE_Rgb_Buffer_in);
    addEffect(in[i], effect, i);
    out[i] = workStrip(frame, strip, gCLAHE_Rgb_Buffer_out);
    effects[i].emplace(in[i]);
    if (!effects[i]->ready()) {
      return false;
    }
    records[i] = {&*effects[i], &out[i], &in[i]};
  }
  runOnPool(effect.stripCount, mapStrip, records);

  for (int i = 0; i < kStrips; ++i) {
    out[i] = workStrip(frame, stripOf(frame.height, kStrips, i), gCLAHE_Rgb_Buffer_out);
    records[i].input = &out[i];
    records[i].output = &yuv[i];
  }
  runOnPool(kStrips, RGB2YUV, records);  // nothing before this has written to the frame
  return true;
}

}  // namespace alg

int fastcvPollInit(int width, int height) {
  const auto bytes = static_cast<std::size_t>(std::ptrdiff_t{width * height * alg::kPackedBytes});
  gCLAHE_Rgb_Buffer_in = static_cast<uint8_t*>(std::malloc(bytes));
  gCLAHE_Rgb_Buffer_out = static_cast<uint8_t*>(std::malloc(bytes));
  HALThreadPoolInit();
  return 0;
}

void fastcvPollDestory() {
  for (uint8_t** buffer : {&gCLAHE_Rgb_Buffer_in, &gCLAHE_Rgb_Buffer_out}) {
    std::free(*buffer);
    *buffer = nullptr;
  }
}
