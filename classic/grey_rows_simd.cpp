// Vector twins of the grey row kernels, compiled once per vector target.
//
// The weighted sum in 16 fractional bits stays within 16-bit lanes: with each weight split into
// 256 x high + low, and H and L the pixel's sums of the high and of the low bytes,
//
//     (256 x H + L) >> 16  =  (H + (L >> 8)) >> 8
//
// exactly, for 256 x H is a multiple of 256. H + (L >> 8) is 65280 at most.
#include "base/image_size.h"
#include "classic/grey_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/grey_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& greyRowVector = greyRowPlain;
constexpr auto& spreadGreyRowVector = spreadGreyRowPlain;
constexpr auto& splitRowVector = splitRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // pixels a step
static_assert(kBlock <= kRowPadding);

#if ALG_IS_NEON()

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
      return _mm256_set1_epi16(static_cast<int16_t>((first & 0xFF) | ((second & 0xFF) << 8)));
    };
    highBlue_ = pair(weights.of[0] >> 8, 0);
    lowBlue_ = pair(weights.of[0], 0);
    highRest_ = pair(weights.of[1] >> 8, weights.of[2] >> 8);
    lowRest_ = pair(weights.of[1], weights.of[2]);
  }

  // The lanes hold pixels 0..15 and 16..31.
  void block(const uint8_t* pixels, uint8_t* grey) const {
    const __m256i few = sums(pixels), more = sums(pixels + 8 * kPackedBytes);
    const __m256i bytes = _mm256_packs_epi16(_mm256_srai_epi16(few, 8), _mm256_srai_epi16(more, 8));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(grey), flipped(bytes));
  }

 private:
  static __m256i flipped(__m256i v) { return _mm256_xor_si256(v, _mm256_set1_epi8(-128)); }

  static __m256i load(const uint8_t* from) {
    const auto* lower = reinterpret_cast<const __m128i*>(from);
    const auto* upper = reinterpret_cast<const __m128i*>(from + 16 * kPackedBytes);
    return flipped(_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lower)),
                                           _mm_loadu_si128(upper), 1));
  }

  // Of 8 pixels in each lane. The second load begins 4 bytes early, so as to end with its pixels.
  __m256i sums(const uint8_t* pixels) const {
    const __m256i first = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 2, 4, 5, 7, 8, 10, 11, 0, -1, 3, -1, 6, -1, 9, -1));
    const __m256i second = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(5, 6, 8, 9, 11, 12, 14, 15, 4, -1, 7, -1, 10, -1, 13, -1));
    const __m256i p = _mm256_shuffle_epi8(load(pixels), first);
    const __m256i q = _mm256_shuffle_epi8(load(pixels + 8), second);
    const __m256i rest = _mm256_unpacklo_epi64(p, q), blue = _mm256_unpackhi_epi64(p, q);
    const __m256i high = _mm256_add_epi16(_mm256_maddubs_epi16(highRest_, rest),
                                          _mm256_maddubs_epi16(highBlue_, blue));
    const __m256i low = _mm256_add_epi16(_mm256_maddubs_epi16(lowRest_, rest),
                                         _mm256_maddubs_epi16(lowBlue_, blue));
    return _mm256_add_epi16(high, _mm256_srai_epi16(low, 8));
  }

  __m256i highBlue_, lowBlue_, highRest_, lowRest_;
};

#endif

void greyRowVector(const uint8_t* pixels, uint8_t* grey, std::size_t width,
                   const GreyWeights& weights) {
  const Weigher weigher(weights);
  const auto weigh = [&](std::size_t x, const uint8_t* from)
                         HWY_ATTR { weigher.block(from, grey + x); };
  forEachBlock<kBlock>(width, weigh, Reads<kPackedBytes>{pixels});
}

void splitRowVector(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch,
                    std::size_t width) {
  const auto split = [&](std::size_t x, const uint8_t* from) HWY_ATTR {
    const Bytes d;
    ByteVector p0, p1, p2;
    hn::LoadInterleaved3(d, from, p0, p1, p2);
    hn::StoreU(p0, d, planes + x);
    hn::StoreU(p1, d, planes + pitch + x);
    hn::StoreU(p2, d, planes + 2 * pitch + x);
  };
  forEachBlock<kBlock>(width, split, Reads<kPackedBytes>{pixels});
}

HWY_INLINE void spreadBlock(const uint8_t* grey, uint8_t* pixels) {
  const Bytes d;
  const ByteVector v = hn::LoadU(d, grey);
#if ALG_IS_NEON()
  hn::StoreInterleaved3(v, v, v, d, pixels);
#else
  // Byte i of a lane's 48 is its grey i / 3.
  alignas(16) static constexpr uint8_t kThirds[48] = {
      0, 0, 0, 1, 1, 1, 2,  2,  2,  3,  3,  3,  4,  4,  4,  5,  5,  5,  6,  6,  6,  7,  7,  7,
      8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15};
  const auto first = hn::LoadDup128(d, kThirds), second = hn::LoadDup128(d, kThirds + 16),
             third = hn::LoadDup128(d, kThirds + 32);
  const ByteVector lower = hn::ConcatLowerLower(d, v, v), upper = hn::ConcatUpperUpper(d, v, v);
  hn::StoreU(hn::TableLookupBytes(lower, hn::ConcatUpperLower(d, second, first)), d, pixels);
  hn::StoreU(hn::TableLookupBytes(v, hn::ConcatUpperLower(d, first, third)), d, pixels + kBlock);
  hn::StoreU(hn::TableLookupBytes(upper, hn::ConcatUpperLower(d, third, second)), d,
             pixels + 2 * kBlock);
#endif
}

void spreadGreyRowVector(const uint8_t* grey, uint8_t* pixels, std::size_t width) {
  const auto spread = [&](std::size_t x, uint8_t* to) HWY_ATTR { spreadBlock(grey + x, to); };
  forEachBlock<kBlock>(width, spread, Writes<kPackedBytes>{pixels});
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

void splitRow(const uint8_t* pixels, uint8_t* planes, std::ptrdiff_t pitch, std::size_t width) {
  ALG_DISPATCH(splitRowVector)(pixels, planes, pitch, width);
}

}  // namespace alg
#endif
