// How the encoding row kernels do a block of pixels with NEON; included by their file.
#if defined(ALG_ENCODE_NEON_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_ENCODE_NEON_INL_H_
#undef ALG_ENCODE_NEON_INL_H_
#else
#define ALG_ENCODE_NEON_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "convert/bt601.h"
#include "convert/byte_weights.h"
#include "convert/row_format.h"
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_IS_NEON()

namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kBlock = 16;  // pixels a step

// The first three bytes of sixteen pixels.
struct Pixels {
  uint8x16_t first, middle, last;
};

template <RowFormat kFormat>
HWY_INLINE Pixels loadPixels(const uint8_t* pixels) {
  if constexpr (kFormat == RowFormat::kPackedUV) {
    const uint8x16x3_t p = vld3q_u8(pixels);
    return {p.val[0], p.val[1], p.val[2]};
  } else {
    const uint8x16x4_t p = vld4q_u8(pixels);
    return {p.val[0], p.val[1], p.val[2]};
  }
}

// Luma from the upper and lower bytes of its factors, so that bytes multiply to 16 bits:
//
//   sum of upper products      hhhh hhhh hhhh hhhh
//   sum of lower products                llll llll llll llll
//   luma                       yyyy yyyy
//
// Both sums stay below 65536, and the lower one's low byte never affects the luma. Offsets are
// added last, by the instruction that narrows; clang would put them into copies that products add
// to.
template <RowFormat kFormat>
HWY_INLINE uint8x16_t lumaOf(const Pixels& p) {
  constexpr ByteWeights kWeights = byteWeights(kFormat, bt601::kY);
  static_assert(kWeights.first >= 0 && kWeights.middle >= 0 && kWeights.last >= 0);
  // The factor's lower byte that is a power of two takes no product.
  constexpr bool kBlueFirst = !encodesRedFirst(kFormat);
  constexpr int kShift = 4;
  static_assert((bt601::kY.blue & 0xFF) == 1 << kShift);
  constexpr int32_t kOther = kBlueFirst ? kWeights.last : kWeights.first;
  const uint8x16_t blue = kBlueFirst ? p.first : p.last, other = kBlueFirst ? p.last : p.first;
  const auto upperOf = [](int32_t w) { return vdup_n_u8(static_cast<uint8_t>(w >> 8)); };
  const auto lowerOf = [](int32_t w) { return vdup_n_u8(static_cast<uint8_t>(w)); };
  const auto half = [&](auto of) HWY_ATTR {
    const uint8x8_t middle = of(p.middle);
    const uint16x8_t upper = vmlal_u8(
        vmlal_u8(vmull_u8(of(p.first), upperOf(kWeights.first)), middle, upperOf(kWeights.middle)),
        of(p.last), upperOf(kWeights.last));
    const uint16x8_t lower =
        vmlal_u8(vmlal_u8(vshll_n_u8(of(blue), kShift), middle, lowerOf(kWeights.middle)),
                 of(other), lowerOf(kOther));
    return opaque(vsraq_n_u16(upper, lower, 8));
  };
  const auto low = [](uint8x16_t v) HWY_ATTR { return vget_low_u8(v); };
  const auto high = [](uint8x16_t v) HWY_ATTR { return vget_high_u8(v); };
  const uint16x8_t offset = vdupq_n_u16(static_cast<uint16_t>(bt601::kY.offset >> 8));
  return vaddhn_high_u16(vaddhn_u16(half(low), offset), half(high), offset);
}

// How far the blue and red of even pixels exceed their green. As the factors of a chroma sample
// cancel out, these two make it.
struct EvenPixels {
  int16x8_t blue, red;
};
static_assert(bt601::kU.red + bt601::kU.green + bt601::kU.blue == 0);
static_assert(bt601::kV.red + bt601::kV.green + bt601::kV.blue == 0);

template <RowFormat kFormat>
HWY_INLINE EvenPixels evenPixels(const Pixels& p) {
  constexpr bool kBlueFirst = !encodesRedFirst(kFormat);
  const uint8x16_t both = kBlueFirst ? vuzp1q_u8(p.first, p.last) : vuzp1q_u8(p.last, p.first);
  const uint8x16_t green = vuzp1q_u8(p.middle, p.middle);
  return {vreinterpretq_s16_u16(vsubl_u8(vget_low_u8(both), vget_low_u8(green))),
          vreinterpretq_s16_u16(vsubl_high_u8(both, green))};
}

// One sample of eight chroma pairs: 32-bit sums, their upper halves.
HWY_INLINE uint16x8_t chromaOf(const EvenPixels& p, const bt601::Weights& weights) {
  const auto blue = static_cast<int16_t>(weights.blue), red = static_cast<int16_t>(weights.red);
  const int32x4_t low =
      vmlal_n_s16(vmull_n_s16(vget_low_s16(p.blue), blue), vget_low_s16(p.red), red);
  const int32x4_t high = vmlal_high_n_s16(vmull_high_n_s16(p.blue, blue), p.red, red);
  const int32x4_t offset = vdupq_n_s32(weights.offset);
  return vreinterpretq_u16_s16(
      vaddhn_high_s32(vaddhn_s32(opaque(low), offset), opaque(high), offset));
}

struct Factors {
  explicit Factors(RowFormat /*format*/) {}
};

template <RowFormat kFormat, bool kChroma>
HWY_INLINE void encodeBlock(const uint8_t* pixels, const Factors& /*factors*/, uint8_t* luma,
                            uint8_t* chroma) {
  const Pixels p = loadPixels<kFormat>(pixels);
  vst1q_u8(luma, lumaOf<kFormat>(p));
  if constexpr (kChroma) {
    const EvenPixels even = evenPixels<kFormat>(p);
    constexpr bt601::Weights kFirst = hasVFirst(kFormat) ? bt601::kV : bt601::kU;
    constexpr bt601::Weights kSecond = hasVFirst(kFormat) ? bt601::kU : bt601::kV;
    vst1q_u8(chroma,
             vreinterpretq_u8_u16(vsliq_n_u16(chromaOf(even, kFirst), chromaOf(even, kSecond), 8)));
  }
}

}  // namespace

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_ENCODE_NEON_INL_H_
