// Vector twins of the colour mixes, compiled once per vector target.
//
// Sums of 18 or 20 bits are taken in 16-bit lanes: a weight is coarse x 2^s + fine with s =
// shift - 7, so that
//
//     sum >> shift  =  (coarse sum + (fine sum >> s)) >> 7        exactly
//
// Coarse weights fit 7 bits and fine ones 4, so that all stays below 2^16, and values above 255 are
// limited when they become bytes. AVX2's sums of two products end at 2^15 - 1, which is 255 then.
#define ALG_ALSO_AVX512
#include "classic/colour_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/colour_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& mixColourRowVector = mixColourRowPlain;

#else

using planes::ByteVector;
using planes::Planes;

constexpr int fineBits(const MixWeights& weights) { return weights.shift - 7; }

constexpr MixWeights coarse(const MixWeights& w) {
  const int bits = fineBits(w);
  return {w.red >> bits, w.green >> bits, w.blue >> bits, 0};
}

constexpr MixWeights fine(const MixWeights& w) {
  const int mask = (1 << fineBits(w)) - 1;
  return {w.red & mask, w.green & mask, w.blue & mask, 0};
}

#if ALG_IS_NEON()

// Half a vector of pixels.
struct Half {
  uint8x8_t r, g, b;
};

struct Halves {
  explicit Halves(const Planes& p)
      : lower{vget_low_u8(p.of[2].raw), vget_low_u8(p.of[1].raw), vget_low_u8(p.of[0].raw)},
        upper{vget_high_u8(p.of[2].raw), vget_high_u8(p.of[1].raw), vget_high_u8(p.of[0].raw)} {}

  Half lower, upper;
};

template <MixWeights kWeights>
HWY_INLINE uint16x8_t weigh(const Half& p) {
  const uint16x8_t red = vmull_u8(p.r, vdup_n_u8(kWeights.red));
  const uint16x8_t redGreen = vmlal_u8(red, p.g, vdup_n_u8(kWeights.green));
  return vmlal_u8(redGreen, p.b, vdup_n_u8(kWeights.blue));
}

template <MixWeights kWeights>
HWY_INLINE uint16x8_t mixHalf(const Half& p) {
  return vsraq_n_u16(weigh<coarse(kWeights)>(p), weigh<fine(kWeights)>(p), fineBits(kWeights));
}

template <MixWeights kWeights>
HWY_INLINE ByteVector mix(const Halves& p) {
  const uint8x8_t lower = vqshrn_n_u16(mixHalf<kWeights>(p.lower), 7);
  return ByteVector(vqshrn_high_n_u16(lower, mixHalf<kWeights>(p.upper), 7));
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using planes::Bytes;
using Shorts = hn::Repartition<int16_t, Bytes>;
using ShortVector = hn::Vec<Shorts>;

// Half a vector of pixels: pairs of bytes, red and green, blue and 0.
struct Half {
  ByteVector redGreen, blue;
};

struct Halves {
  // All channels in the home order of channel 1.
  explicit Halves(const Planes& p) {
    const Bytes d;
    const ByteVector b = planes::rehome<0, 1>(p.of[0]);
    const ByteVector g = p.of[1];
    const ByteVector r = planes::rehome<2, 1>(p.of[2]);
    lower = {hn::InterleaveLower(d, r, g), hn::InterleaveLower(d, b, hn::Zero(d))};
    upper = {hn::InterleaveUpper(d, r, g), hn::InterleaveUpper(d, b, hn::Zero(d))};
  }

  Half lower, upper;
};

template <MixWeights kWeights>
HWY_INLINE ShortVector weigh(const Half& p) {
  return hn::Add(ops::weighPairs<kWeights.red, kWeights.green>(p.redGreen),
                 ops::weighPairs<kWeights.blue, 0>(p.blue));
}

template <MixWeights kWeights>
HWY_INLINE ShortVector mixHalf(const Half& p) {
  const hn::RebindToUnsigned<Shorts> d;
  const auto rest = hn::ShiftRight<fineBits(kWeights)>(weigh<fine(kWeights)>(p));
  const auto sum = hn::BitCast(d, hn::Add(weigh<coarse(kWeights)>(p), rest));
  return hn::BitCast(Shorts(), hn::ShiftRight<7>(sum));
}

template <MixWeights kWeights>
HWY_INLINE ByteVector mix(const Halves& p) {
  return ops::join(mixHalf<kWeights>(p.lower), mixHalf<kWeights>(p.upper));
}

#endif

// From the home order of channel 1.
HWY_INLINE Planes join(ByteVector first, ByteVector second, ByteVector third) {
  return {{planes::rehome<1, 0>(first), second, planes::rehome<1, 2>(third)}};
}

void greyVector(const uint8_t* src, uint8_t* dst, std::size_t pixels) {
  planes::mapPixels(src, dst, pixels, [](const Planes& p) HWY_ATTR {
    const ByteVector luma = mix<kLuma>(Halves(p));
    return join(luma, luma, luma);
  });
}

void sepiaVector(const uint8_t* src, uint8_t* dst, std::size_t pixels) {
  planes::mapPixels(src, dst, pixels, [](const Planes& p) HWY_ATTR {
    const Halves halves(p);
    return join(mix<kSepiaRed>(halves), mix<kSepiaGreen>(halves), mix<kSepiaBlue>(halves));
  });
}

void mixColourRowVector(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels) {
  (mix == ColourMix::kGrey ? greyVector : sepiaVector)(src, dst, pixels);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void mixColourRow(ColourMix mix, const uint8_t* src, uint8_t* dst, std::size_t pixels) {
  ALG_DISPATCH(mixColourRowVector)(mix, src, dst, pixels);
}

}  // namespace alg
#endif
