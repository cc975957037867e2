// Vector twins of the grey row kernels, compiled once per vector target.
//
// The weighted sum in 16 fractional bits stays within 16-bit lanes: with each weight split into
// 256 x high + low, and H and L the pixel's sums of the high and of the low bytes,
//
//     (256 x H + L) >> 16  =  (H + (L >> 8)) >> 8
//
// exactly, for 256 x H is a multiple of 256. H + (L >> 8) is 65280 at most.
#define ALG_ALSO_AVX512
#include "base/image_size.h"
#include "classic/grey_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/grey_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& greyRowVector = greyRowPlain;
constexpr auto& spreadGreyRowVector = spreadGreyRowPlain;
constexpr auto& tintGreyRowVector = tintGreyRowPlain;
constexpr auto& splitRowVector = splitRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // pixels a step
static_assert(kBlock <= kRowPadding);

// A block of pixels: their planes with three-way loads and stores, otherwise as it is in memory.
struct Pixels {
  ByteVector v0, v1, v2;
};

#if ALG_IS_NEON()

// Weights that are multiples of 1/512, those of blue and red small, that of green an even one. With
// A the sum of blue and red in units of 1/512, and B green in units of 1/256,
//
//     (A + 2 B) >> 9  =  ((A >> 1) + B) >> 8
class ShortWeigher {
 public:
  static bool takes(const GreyWeights& weights) {
    return (weights.of[0] | weights.of[2]) % 128 == 0 && weights.of[1] % 256 == 0 &&
           weights.of[0] + weights.of[2] < 256 * 128;
  }

  explicit ShortWeigher(const GreyWeights& weights)
      : blue_(vdupq_n_u8(static_cast<uint8_t>(weights.of[0] >> 7))),
        green_(vdupq_n_u8(static_cast<uint8_t>(weights.of[1] >> 8))),
        red_(vdupq_n_u8(static_cast<uint8_t>(weights.of[2] >> 7))) {}

  void block(const uint8_t* pixels, uint8_t* grey) const {
    const uint8x16x3_t p = vld3q_u8(pixels);
    const auto low = [](uint8x16_t v) HWY_ATTR { return vget_low_u8(v); };
    const uint16x8_t outer0 =
        vmlal_u8(vmull_u8(low(p.val[0]), low(blue_)), low(p.val[2]), low(red_));
    const uint16x8_t outer1 = vmlal_high_u8(vmull_high_u8(p.val[0], blue_), p.val[2], red_);
    const uint16x8_t sum0 = vsraq_n_u16(vmull_u8(low(p.val[1]), low(green_)), outer0, 1);
    const uint16x8_t sum1 = vsraq_n_u16(vmull_high_u8(p.val[1], green_), outer1, 1);
    vst1q_u8(grey, vshrn_high_n_u16(vshrn_n_u16(sum0, 8), sum1, 8));
  }

 private:
  uint8x16_t blue_, green_, red_;
};

// Three byte planes and widening multiplications: H and L of 8 pixels a vector.
class Weigher {
 public:
  explicit Weigher(const GreyWeights& weights) {
    for (int c = 0; c < kPackedBytes; ++c) {
      high_[c] = vdupq_n_u8(static_cast<uint8_t>(weights.of[c] >> 8));
      low_[c] = vdupq_n_u8(static_cast<uint8_t>(weights.of[c]));
    }
  }

  void block(const uint8_t* pixels, uint8_t* grey) const {
    const uint8x16x3_t p = vld3q_u8(pixels);
    const uint8x8_t few =
        grey8(vget_low_u8(p.val[0]), vget_low_u8(p.val[1]), vget_low_u8(p.val[2]));
    const uint16x8_t low = sumHigh(p, low_), high = sumHigh(p, high_);
    vst1q_u8(grey, vshrn_high_n_u16(few, vsraq_n_u16(high, low, 8), 8));
  }

 private:
  static uint16x8_t sumHigh(const uint8x16x3_t& p, const uint8x16_t* weights) {
    uint16x8_t sum = vmull_high_u8(p.val[0], weights[0]);
    sum = vmlal_high_u8(sum, p.val[1], weights[1]);
    return vmlal_high_u8(sum, p.val[2], weights[2]);
  }

  static uint16x8_t sumLow(uint8x8_t p0, uint8x8_t p1, uint8x8_t p2, const uint8x16_t* weights) {
    uint16x8_t sum = vmull_u8(p0, vget_low_u8(weights[0]));
    sum = vmlal_u8(sum, p1, vget_low_u8(weights[1]));
    return vmlal_u8(sum, p2, vget_low_u8(weights[2]));
  }

  uint8x8_t grey8(uint8x8_t p0, uint8x8_t p1, uint8x8_t p2) const {
    const uint16x8_t low = sumLow(p0, p1, p2, low_), high = sumLow(p0, p1, p2, high_);
    return vshrn_n_u16(vsraq_n_u16(high, low, 8), 8);
  }

  uint8x16_t high_[3], low_[3];
};

#else

// Signed bytes p - 128 times unsigned weights, added in pairs of 16-bit lanes. That lowers H by
// 128 x (the sum of the high bytes) and L by 128 x (that of the low ones), together H + (L >> 8) by
// 32768, and the grey by 128. No pair of products leaves the 16 bits.
//
//     b0 g0 r0 b1 g1 r1 ... r3   -->   g0 r0 g1 r1 g2 r2 g3 r3 | b0 . b1 . b2 . b3 .
class Weigher {
 public:
  explicit Weigher(const GreyWeights& weights) {
    const auto pair = [](unsigned first, unsigned second) HWY_ATTR {
      const auto both = static_cast<uint16_t>((first & 0xFF) | ((second & 0xFF) << 8));
      return hn::BitCast(Bytes(), hn::Set(hn::Repartition<uint16_t, Bytes>(), both));
    };
    highBlue_ = pair(weights.of[0] >> 8, 0);
    lowBlue_ = pair(weights.of[0], 0);
    highRest_ = pair(weights.of[1] >> 8, weights.of[2] >> 8);
    lowRest_ = pair(weights.of[1], weights.of[2]);
  }

#if ALG_IS_AVX512()
  void block(const uint8_t* pixels, uint8_t* grey) const {
    const Bytes d;
    const planes::Planes p = planes::load(pixels);
    const ByteVector blue = flipped(planes::rehome<0, 1>(p.of[0]));
    const ByteVector red = flipped(planes::rehome<2, 1>(p.of[2])), green = flipped(p.of[1]);
    const auto lower = sum(hn::InterleaveLower(d, green, red), hn::InterleaveLower(d, blue, blue));
    const auto upper = sum(hn::InterleaveUpper(d, green, red), hn::InterleaveUpper(d, blue, blue));
    hn::StoreU(planes::ordered<1>(bytesOf(lower, upper)), d, grey);
  }
#else
  // The lanes hold pixels 0..15 and 16..31.
  void block(const uint8_t* pixels, uint8_t* grey) const {
    hn::StoreU(bytesOf(sums(pixels), sums(pixels + 8 * kPackedBytes)), Bytes(), grey);
  }
#endif

 private:
  static ByteVector flipped(ByteVector v) { return hn::Xor(v, hn::Set(Bytes(), 0x80)); }

  static ByteVector bytesOf(ops::ShortVector few, ops::ShortVector more) {
    return flipped(ops::joinSigned(hn::ShiftRight<8>(few), hn::ShiftRight<8>(more)));
  }

  ops::ShortVector sum(ByteVector rest, ByteVector blue) const {
    const auto high = hn::Add(ops::weighPairs(highRest_, rest), ops::weighPairs(highBlue_, blue));
    const auto low = hn::Add(ops::weighPairs(lowRest_, rest), ops::weighPairs(lowBlue_, blue));
    return hn::Add(high, hn::ShiftRight<8>(low));
  }

#if ALG_IS_AVX2()
  static __m256i load(const uint8_t* from) {
    const auto* lower = reinterpret_cast<const __m128i*>(from);
    const auto* upper = reinterpret_cast<const __m128i*>(from + 16 * kPackedBytes);
    const __m256i both = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lower)),
                                                 _mm_loadu_si128(upper), 1);
    return flipped(ByteVector{both}).raw;
  }

  // Of 8 pixels in each lane. The second load begins 4 bytes early, so as to end with its pixels.
  ops::ShortVector sums(const uint8_t* pixels) const {
    const __m256i first = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 2, 4, 5, 7, 8, 10, 11, 0, -1, 3, -1, 6, -1, 9, -1));
    const __m256i second = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(5, 6, 8, 9, 11, 12, 14, 15, 4, -1, 7, -1, 10, -1, 13, -1));
    const __m256i p = _mm256_shuffle_epi8(load(pixels), first);
    const __m256i q = _mm256_shuffle_epi8(load(pixels + 8), second);
    return sum(ByteVector{_mm256_unpacklo_epi64(p, q)}, ByteVector{_mm256_unpackhi_epi64(p, q)});
  }
#endif

  ByteVector highBlue_, lowBlue_, highRest_, lowRest_;
};

#endif

template <class AnyWeigher>
HWY_INLINE void weighRow(const uint8_t* pixels, uint8_t* grey, std::size_t width,
                         const AnyWeigher weigher) {
  const auto weigh = [&](std::size_t x, const uint8_t* from)
                         HWY_ATTR { weigher.block(from, grey + x); };
  forEachBlock<kBlock>(width, weigh, Reads<kPackedBytes>{pixels});
}

void greyRowVector(const uint8_t* pixels, uint8_t* grey, std::size_t width,
                   const GreyWeights& weights) {
#if ALG_IS_NEON()
  if (ShortWeigher::takes(weights)) {
    return weighRow(pixels, grey, width, ShortWeigher(weights));
  }
#endif
  weighRow(pixels, grey, width, Weigher(weights));
}

void splitRowVector(const uint8_t* pixels, uint8_t* to, std::ptrdiff_t pitch, std::size_t width) {
  const auto split = [&](std::size_t x, const uint8_t* from) HWY_ATTR {
    const Bytes d;
    const planes::Planes p = planes::loadOrdered(from);
    hn::StoreU(p.of[0], d, to + x);
    hn::StoreU(p.of[1], d, to + pitch + x);
    hn::StoreU(p.of[2], d, to + 2 * pitch + x);
  };
  forEachBlock<kBlock>(width, split, Reads<kPackedBytes>{pixels});
}

#if !ALG_IS_NEON()
// Which grey byte i of its pixels takes; of AVX2's, in each half of a vector.
struct Thirds {
  constexpr Thirds() {
    for (std::size_t i = 0; i < sizeof of; ++i) {
      of[i] = static_cast<uint8_t>(i / kPackedBytes);
    }
  }
  alignas(64) uint8_t of[kPackedBytes * (ALG_IS_AVX512() ? 64 : 16)] = {};
};
constexpr Thirds kThirds;

// Bytes i with i % 3 < 2.
struct Tinted {
  constexpr Tinted() {
    for (std::size_t i = 0; i < sizeof of; ++i) {
      of[i] = i % kPackedBytes < 2 ? 255 : 0;
    }
  }
  alignas(64) uint8_t of[kBlock + 2] = {};
};
constexpr Tinted kTinted;
#endif

// Greys as they lie in the three vectors of their pixels.
HWY_INLINE Pixels spread(const uint8_t* grey) {
  const Bytes d;
  const ByteVector v = hn::LoadU(d, grey);
#if ALG_IS_NEON()
  return {v, v, v};
#elif ALG_IS_AVX512()
  const auto part = [&](std::size_t k) HWY_ATTR {
    return ByteVector{_mm512_permutexvar_epi8(hn::Load(d, kThirds.of + kBlock * k).raw, v.raw)};
  };
  return {part(0), part(1), part(2)};
#else
  const auto first = hn::LoadDup128(d, kThirds.of), second = hn::LoadDup128(d, kThirds.of + 16),
             third = hn::LoadDup128(d, kThirds.of + 32);
  const ByteVector lower = hn::ConcatLowerLower(d, v, v), upper = hn::ConcatUpperUpper(d, v, v);
  return {hn::TableLookupBytes(lower, hn::ConcatUpperLower(d, second, first)),
          hn::TableLookupBytes(v, hn::ConcatUpperLower(d, first, third)),
          hn::TableLookupBytes(upper, hn::ConcatUpperLower(d, third, second))};
#endif
}

// Bytes 0 and 1 of each pixel, and 0 for byte 2.
HWY_INLINE Pixels loadTints(const uint8_t* tints) {
  const Bytes d;
#if ALG_IS_NEON()
  ByteVector t0, t1, t2;
  hn::LoadInterleaved3(d, tints, t0, t1, t2);
  return {t0, t1, hn::Zero(d)};
#else
  const auto masked = [&](std::size_t k) HWY_ATTR {
    return hn::And(hn::LoadU(d, tints + kBlock * k),
                   hn::LoadU(d, kTinted.of + kBlock * k % kPackedBytes));
  };
  return {masked(0), masked(1), masked(2)};
#endif
}

HWY_INLINE void storePixels(const Pixels& p, uint8_t* to) {
  const Bytes d;
#if ALG_IS_NEON()
  hn::StoreInterleaved3(p.v0, p.v1, p.v2, d, to);
#else
  hn::StoreU(p.v0, d, to);
  hn::StoreU(p.v1, d, to + kBlock);
  hn::StoreU(p.v2, d, to + 2 * kBlock);
#endif
}

void spreadGreyRowVector(const uint8_t* grey, uint8_t* pixels, std::size_t width) {
  const auto block = [&](std::size_t x, uint8_t* to)
                         HWY_ATTR { storePixels(spread(grey + x), to); };
  forEachBlock<kBlock>(width, block, Writes<kPackedBytes>{pixels});
}

void tintGreyRowVector(const uint8_t* grey, const uint8_t* tints, uint8_t* pixels,
                       std::size_t width) {
  const auto block = [&](std::size_t x, const uint8_t* from, uint8_t* to) HWY_ATTR {
    const Pixels greys = spread(grey + x), added = loadTints(from);
    storePixels({hn::SaturatedAdd(greys.v0, added.v0), hn::SaturatedAdd(greys.v1, added.v1),
                 hn::SaturatedAdd(greys.v2, added.v2)},
                to);
  };
  forEachBlock<kBlock>(width, block, Reads<kPackedBytes>{tints}, Writes<kPackedBytes>{pixels});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void greyRow(const uint8_t* pixels, uint8_t* grey, std::size_t width, const GreyWeights& weights) {
  ALG_DISPATCH(greyRowVector)(pixels, grey, width, weights);
}

void spreadGreyRow(const uint8_t* grey, uint8_t* pixels, std::size_t width) {
  ALG_DISPATCH(spreadGreyRowVector)(grey, pixels, width);
}

void tintGreyRow(const uint8_t* grey, const uint8_t* tints, uint8_t* pixels, std::size_t width) {
  ALG_DISPATCH(tintGreyRowVector)(grey, tints, pixels, width);
}

void splitRow(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch, std::size_t width) {
  ALG_DISPATCH(splitRowVector)(pixels, planes, pitch, width);
}

}  // namespace alg
#endif
