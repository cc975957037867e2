#include "effect/phases.h"

#include <cstddef>
#include <optional>

#include "base/image_size.h"
#include "effect/strip_effect.h"
#include "libalgorithm/yuv_convert.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

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
  tagT_ThreadPoolTaskInput records[kStrips] = {};
  YuvStripDesc yuv[kStrips];
  RgbStripDesc in[kStrips];
  RgbStripDesc out[kStrips];
  std::optional<StripEffect> effects[kStrips];
  for (int i = 0; i < kStrips; ++i) {
    const Strip strip = stripOf(frame.height, kStrips, i);
    yuv[i] = yuvStrip(frame, strip);
    in[i] = workStrip(frame, strip, gCLAHE_Rgb_Buffer_in);
    records[i].input = &yuv[i];
    records[i].output = &in[i];
  }
  runOnPool(kStrips, YUV2RGB, records);

  const EffectOfRun found(effectName, frame.width, frame.height);
  const EffectTypeInfo& effect = found.info();
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
