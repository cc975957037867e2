// The effect of one strip.
#include <algorithm>

#include "base/image_size.h"
#include "effect/effect_table.h"
#include "kernels/curve_map.h"
#include "libalgorithm/effect_pipeline.h"

namespace {

/// The pixels as they are, crossed like every effect's, so that the conversion back undoes it.
void exchange(const unsigned char* src, unsigned char* dst, int width, int height) {
  constexpr auto kSame = [](int v) { return static_cast<uint8_t>(v); };
  static const alg::Curves kIdentity = alg::makeCurves(kSame, kSame, kSame);
  alg::mapCurves(src, dst, alg::pixelCount(width, height), kIdentity);
}

}  // namespace

void EffectFunction(const void* input, const void* /*param*/, void* output) {
  const auto& in = *static_cast<const RgbStripDesc*>(input);
  unsigned char* const dst = static_cast<const RgbStripDesc*>(output)->pixels;
  const auto table = alg::effectTable();
  const auto entry = std::ranges::find(table, in.effectId, &alg::EffectTableEntry::effectId);
  if (entry != table.end() && entry->filter != nullptr) {
    entry->filter(in.pixels, dst, in.width, in.rows);
  } else if (entry != table.end() && entry->overlayFilter != nullptr) {
    entry->overlayFilter(in.pixels, dst, in.width, in.rows, in.overlay, in.overlayWidth,
                         in.overlayRows);
  } else {
    exchange(in.pixels, dst, in.width, in.rows);
  }
}
