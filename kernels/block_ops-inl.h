// Steps of vectors that Highway has no portable name for; included by kernel files, once per vector
// target. Those of x86 work within blocks of 16 bytes, however long vectors are.
#if defined(ALG_BLOCK_OPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_BLOCK_OPS_INL_H_
#undef ALG_BLOCK_OPS_INL_H_
#else
#define ALG_BLOCK_OPS_INL_H_
#endif

#include <cstdint>

#include "hwy/highway.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_HAS_VECTORS()

namespace ops {

namespace hn = hwy::HWY_NAMESPACE;

using ByteVector = hn::Vec<hn::ScalableTag<uint8_t>>;
using ShortVector = hn::Vec<hn::ScalableTag<int16_t>>;
using IntVector = hn::Vec<hn::ScalableTag<int32_t>>;
using FloatVector = hn::Vec<hn::ScalableTag<float>>;

// To an integer, towards 0. What no int holds becomes anything.
HWY_INLINE IntVector truncated(FloatVector v) {
#if ALG_IS_AVX512()
  return IntVector{_mm512_cvttps_epi32(v.raw)};
#elif ALG_IS_AVX2()
  return IntVector{_mm256_cvttps_epi32(v.raw)};
#else
  return hn::ConvertTo(hn::ScalableTag<int32_t>(), v);
#endif
}

#if !ALG_IS_NEON()

// Unsigned bytes of a times signed ones of b, those of each pair added and limited to 16 bits.
HWY_INLINE ShortVector weighPairs(ByteVector a, ByteVector b) {
#if ALG_IS_AVX512()
  return ShortVector{_mm512_maddubs_epi16(a.raw, b.raw)};
#else
  return ShortVector{_mm256_maddubs_epi16(a.raw, b.raw)};
#endif
}

// The same pair of weights for all.
template <int kFirst, int kSecond>
HWY_INLINE ShortVector weighPairs(ByteVector a) {
  const auto weights = static_cast<int16_t>((kFirst & 0xFF) | kSecond * 256);
  return weighPairs(
      a, hn::BitCast(hn::ScalableTag<uint8_t>(), hn::Set(hn::ScalableTag<int16_t>(), weights)));
}

#if ALG_IS_AVX512()

// A table of 256 bytes, in registers. Half of it is looked up at once, by the lower 7 bits of an
// index; bit 7 chooses.
class ByteTable {
 public:
  HWY_INLINE explicit ByteTable(const uint8_t* table) {
    for (int i = 0; i < 4; ++i) {
      part_[i] = _mm512_loadu_si512(table + 64 * i);
    }
  }

  HWY_INLINE ByteVector operator()(ByteVector v) const { return lookUp(~__mmask64{0}, v); }

  // 0 where `asked` is not set.
  HWY_INLINE ByteVector lookUp(__mmask64 asked, ByteVector v) const {
    const __m512i lower = _mm512_maskz_permutex2var_epi8(asked, part_[0], v.raw, part_[1]);
    const __m512i upper = _mm512_maskz_permutex2var_epi8(asked, part_[2], v.raw, part_[3]);
    return ByteVector{_mm512_mask_blend_epi8(_mm512_movepi8_mask(v.raw), lower, upper)};
  }

 private:
  __m512i part_[4];
};

// Adds to each lane the products of its four unsigned bytes of a and signed ones of b.
HWY_INLINE IntVector addProducts(IntVector sum, ByteVector a, ByteVector b) {
  // Highway's features of this target lack the one that compilers ask for.
  asm("vpdpbusd %2, %1, %0" : "+v"(sum.raw) : "v"(a.raw), "v"(b.raw));
  return sum;
}

#endif

// The sum of both squares of each pair.
HWY_INLINE IntVector sumSquares(ShortVector pairs) {
#if ALG_IS_AVX512()
  return IntVector{_mm512_madd_epi16(pairs.raw, pairs.raw)};
#else
  return IntVector{_mm256_madd_epi16(pairs.raw, pairs.raw)};
#endif
}

// Limited to the narrower lanes; blocks of a and b take turns.
HWY_INLINE ShortVector join(IntVector a, IntVector b) {
#if ALG_IS_AVX512()
  return ShortVector{_mm512_packs_epi32(a.raw, b.raw)};
#else
  return ShortVector{_mm256_packs_epi32(a.raw, b.raw)};
#endif
}

HWY_INLINE ByteVector join(ShortVector a, ShortVector b) {
#if ALG_IS_AVX512()
  return ByteVector{_mm512_packus_epi16(a.raw, b.raw)};
#else
  return ByteVector{_mm256_packus_epi16(a.raw, b.raw)};
#endif
}

HWY_INLINE ByteVector joinSigned(ShortVector a, ShortVector b) {
#if ALG_IS_AVX512()
  return ByteVector{_mm512_packs_epi16(a.raw, b.raw)};
#else
  return ByteVector{_mm256_packs_epi16(a.raw, b.raw)};
#endif
}

#endif

}  // namespace ops

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_BLOCK_OPS_INL_H_
