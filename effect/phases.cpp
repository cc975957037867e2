#include "effect/phases.h"

#include <cstddef>
#include <optional>
#include <span>

#include "base/image_size.h"
#include "convert/frame_convert.h"
#include "effect/strip_effect.h"
#include "libalgorithm/effect_pipeline.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

std::size_t workOffset(const Frame& frame, int row) {
  return std::size_t{kPackedBytes} * static_cast<std::size_t>(frame.width) *
         static_cast<std::size_t>(row);
}

/// A strip of the effect phase: all strips have the effect, or none has.
struct EffectStrip {
  std::optional<StripEffect> effect;
  Strip rows;
};

}  // namespace

bool runPhases(const EffectRequest& request, const Frame& frame, bool& lacksPicture) {
  Strip strips[kStrips];
  for (int i = 0; i < kStrips; ++i) {
    strips[i] = stripOf(frame.height, kStrips, i);
  }
  runOnPool(strips, [&](const Strip& strip) {
    const Frame rows = rowsOf(frame, strip);
    decodeFrame(RowFormat::kPackedUV, gCLAHE_Rgb_Buffer_in + workOffset(frame, strip.firstRow),
                {rows.y, rows.uv, rows.yStride, rows.uvStride}, rows.width, rows.height);
  });

  const ChosenEffect effect(request, frame.width, frame.height);
  lacksPicture = effect.lacksPicture();
  EffectStrip effectStrips[kStrips];
  const auto used = std::span(effectStrips).first(static_cast<std::size_t>(effect.strips()));
  for (int i = 0; i < effect.strips(); ++i) {
    auto& [stripEffect, rows] = effectStrips[i];
    rows = stripOf(frame.height, effect.strips(), i);
    stripEffect.emplace(effect.operation(), bandOf(effect.picture(), effect.strips(), i),
                        frame.width, rows.rows);
    if (!stripEffect->ready()) {
      return false;
    }
  }
  runOnPool(used, [&](EffectStrip& strip) {
    const std::size_t offset = workOffset(frame, strip.rows.firstRow);
    strip.effect->mapRows(gCLAHE_Rgb_Buffer_in + offset, gCLAHE_Rgb_Buffer_out + offset, 0,
                          strip.rows.rows);
  });

  runOnPool(strips, [&](const Strip& strip) {  // the first to write to the frame
    const Frame rows = rowsOf(frame, strip);
    encodeFrame(RowFormat::kPackedUV, gCLAHE_Rgb_Buffer_out + workOffset(frame, strip.firstRow),
                {rows.y, rows.uv, rows.yStride, rows.uvStride}, rows.width, rows.height);
  });
  return true;
}

}  // namespace alg
