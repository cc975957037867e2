// How the decoding row kernels do a block of pixels with NEON; included by their file.
#if defined(ALG_DECODE_NEON_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_DECODE_NEON_INL_H_
#undef ALG_DECODE_NEON_INL_H_
#else
#define ALG_DECODE_NEON_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "convert/bt601.h"
#include "convert/row_format.h"
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_IS_NEON()

namespace {

namespace hn = hwy::HWY_NAMESPACE;

using ByteVector = hn::Vec<hn::ScalableTag<uint8_t>>;

constexpr std::size_t kBlock = 16;  // pixels a step

// The chroma part of a channel for the eight pairs of a block, 16 fraction bits, offsets included.
// It may be negative: the sum with a level wraps to the correct value.
struct ChromaTerm {
  uint32x4_t low, high;
};

struct ChromaTerms {
  ChromaTerm b, g, r;
};

// What the offsets of luma and chroma contribute to a channel.
constexpr uint32_t offsetOf(int32_t factors) {
  return static_cast<uint32_t>(-bt601::kLumaGain * bt601::kLumaOffset -
                               factors * bt601::kChromaOffset);
}

// The least number that divides a factor less one into a factor of 16 bits.
constexpr int32_t divisorOf(int32_t factor) {
  int32_t divisor = 1;
  while ((factor - 1) % divisor != 0 || (factor - 1) / divisor > 0xFFFF) ++divisor;
  return divisor;
}

// factor * sample + offset, as a product of 16 bits and the sample itself.
template <int32_t kFactor>
HWY_INLINE ChromaTerm gain(uint16x8_t sample) {
  constexpr int32_t kDivisor = divisorOf(kFactor);
  static_assert(kDivisor == 2 || kDivisor == 3);
  constexpr auto kRest = static_cast<uint16_t>(kFactor / kDivisor);
  const uint16x8_t twice = vshlq_n_u16(sample, 1);
  // Of a plain addition clang makes a product, which takes longer.
  const uint16x8_t times = kDivisor == 2 ? twice : vqaddq_u16(twice, sample);
  const uint32x4_t offset = vdupq_n_u32(offsetOf(kFactor));
  return {vmlal_n_u16(vaddw_u16(offset, vget_low_u16(sample)), vget_low_u16(times), kRest),
          vmlal_high_n_u16(vaddw_high_u16(offset, sample), times, kRest)};
}

struct Chroma {
  explicit Chroma(RowFormat /*format*/) {}
};

template <RowFormat kFormat>
HWY_INLINE ChromaTerms chromaTerms(const Chroma& /*factors*/, const uint8_t* chroma) {
  const uint16x8_t pairs = vreinterpretq_u16_u8(vld1q_u8(chroma));
  const uint16x8_t first = vandq_u16(pairs, vdupq_n_u16(0xFF)), second = vshrq_n_u16(pairs, 8);
  const uint16x8_t u = hasVFirst(kFormat) ? second : first;
  const uint16x8_t v = hasVFirst(kFormat) ? first : second;
  constexpr auto kFromU = static_cast<uint16_t>(-bt601::kGreenFromU);
  constexpr auto kFromV = static_cast<uint16_t>(-bt601::kGreenFromV);
  const uint32x4_t offset = vdupq_n_u32(offsetOf(bt601::kGreenFromU + bt601::kGreenFromV));
  const ChromaTerm green = {
      vmlsl_n_u16(vmlsl_n_u16(offset, vget_low_u16(u), kFromU), vget_low_u16(v), kFromV),
      vmlsl_high_n_u16(vmlsl_high_n_u16(offset, u, kFromU), v, kFromV)};
  return {gain<bt601::kBlueFromU>(u), green, gain<bt601::kRedFromV>(v)};
}

struct Level {
  uint32x4_t low, high;
};

// 76310 Y as 2 Y times half the factor, which fits 16 bits.
HWY_INLINE Level levelOf(uint8x8_t luma) {
  static_assert(bt601::kLumaGain % 2 == 0 && bt601::kLumaGain / 2 <= 0xFFFF);
  const uint16x8_t twice = vshll_n_u8(luma, 1);
  constexpr auto kHalf = static_cast<uint16_t>(bt601::kLumaGain / 2);
  return {vmull_n_u16(vget_low_u16(twice), kHalf), vmull_high_n_u16(twice, kHalf)};
}

// The channel of eight pixels, saturated, in the upper byte of each lane:
//
//   level      iiii iiii . ffff ffff     32 bits
//   + chroma   iiii iiii . ffff ffff
//   ADDHN      iiii iiii                 16 bits, signed
//   SQSHLU     cccc ....                 0..255 in the upper byte
HWY_INLINE ByteVector channel(const Level& level, const ChromaTerm& term) {
  const uint16x8_t whole = vaddhn_high_u32(vaddhn_u32(level.low, term.low), level.high, term.high);
  return ByteVector(vreinterpretq_u8_u16(vqshluq_n_s16(vreinterpretq_s16_u16(whole), 8)));
}

template <RowFormat kFormat, bool /*kStream*/>
HWY_INLINE void decodeBlock(const uint8_t* luma, const ChromaTerms& terms, uint8_t* pixels) {
  const uint8x8x2_t columns = vld2_u8(luma);
  const Level even = levelOf(columns.val[0]), odd = levelOf(columns.val[1]);
  const auto both = [&](const ChromaTerm& term) HWY_ATTR {
    return vtrn2q_u8(channel(even, term).raw, channel(odd, term).raw);
  };
  if constexpr (kFormat == RowFormat::kPackedUV) {
    const uint8x16x3_t packed{both(terms.b), both(terms.g), both(terms.r)};
    vst3q_u8(pixels, packed);
  } else {
    const uint8x16x4_t words{both(hasRedFirst(kFormat) ? terms.r : terms.b), both(terms.g),
                             both(hasRedFirst(kFormat) ? terms.b : terms.r), vdupq_n_u8(0xFF)};
    vst4q_u8(pixels, words);
  }
}

}  // namespace

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_DECODE_NEON_INL_H_
