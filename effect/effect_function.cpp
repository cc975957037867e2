// The effect of one strip.
#include <iterator>

#include "base/image_size.h"
#include "kernels/curve_map.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"

namespace {

using SimpleFilter = void (*)(unsigned char*, unsigned char*, int, int);
using OverlayFilter = void (*)(unsigned char*, unsigned char*, int, int, unsigned char*, int, int);

constexpr int kFirstSimple = 20;
constexpr SimpleFilter kSimpleFilters[] = {PrettySweet, PrettyNature, PrettyBlue, PrettyMoonlight,
                                           PrettyWhiteDew};
constexpr int kFirstOverlay = 25;
constexpr OverlayFilter kOverlayFilters[] = {PrettyBeautiful, PrettyPink, PrettyJapan};

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
  if (in.effectId >= kFirstSimple && in.effectId < kFirstOverlay) {
    kSimpleFilters[in.effectId - kFirstSimple](in.pixels, dst, in.width, in.rows);
  } else if (in.effectId >= kFirstOverlay &&
             in.effectId < kFirstOverlay + int{std::size(kOverlayFilters)}) {
    kOverlayFilters[in.effectId - kFirstOverlay](in.pixels, dst, in.width, in.rows, in.overlay,
                                                 in.overlayWidth, in.overlayRows);
  } else {
    exchange(in.pixels, dst, in.width, in.rows);
  }
}
