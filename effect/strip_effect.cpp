#include "effect/strip_effect.h"

#include <algorithm>

#include "kernels/curve_map.h"

namespace alg {
namespace {

/// The pixels as they are, crossed like every effect's, so that the conversion back undoes it.
void exchange(unsigned char* src, unsigned char* dst, int width, int height) {
  constexpr auto kSame = [](int v) { return static_cast<uint8_t>(v); };
  static const Curves kIdentity = makeCurves(kSame, kSame, kSame);
  mapCurves(src, dst, width, height, kIdentity);
}

}  // namespace

StripEffect::StripEffect(const RgbStripDesc& strip) : width_(strip.width), filter_(exchange) {
  const auto table = effectTable();
  const auto entry = std::ranges::find(table, strip.effectId, &EffectTableEntry::effectId);
  if (entry == table.end()) {
    return;
  }
  if (entry->filter != nullptr) {
    filter_ = entry->filter;
  } else if (entry->softLight != nullptr) {
    image_.emplace(entry->softLight(),
                   Overlay{strip.overlay, strip.overlayWidth, strip.overlayRows}, strip.width,
                   strip.rows);
  }
}

void StripEffect::mapRows(uint8_t* src, uint8_t* dst, int firstRow, int rows) {
  if (image_ && image_->ready()) {
    image_->mapRows(src, dst, firstRow, rows);
  } else {
    filter_(src, dst, width_, rows);
  }
}

}  // namespace alg

void EffectFunction(const void* input, const void* /*param*/, void* output) {
  const auto& in = *static_cast<const RgbStripDesc*>(input);
  const auto& out = *static_cast<const RgbStripDesc*>(output);
  alg::StripEffect(in).mapRows(in.pixels, out.pixels, 0, in.rows);
}
