// Vector twins of the box blur's kernels from work row to work row, compiled once per vector
// target.
#define ALG_ALSO_AVX512
#include <cstddef>
#include <cstdint>

#include "kernels/box_blur_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/box_blur_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& meansAcrossVector = meansAcrossPlain;
constexpr auto& sumsAcrossVector = sumsAcrossPlain;
constexpr auto& finishMeansVector = finishMeansPlain;
constexpr auto& addSquaresVector = addSquaresPlain;
constexpr auto& finishSquaresVector = finishSquaresPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Shorts = hn::Repartition<uint16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using HalfBytes = hn::Half<Bytes>;  // as many bytes as there are short lanes
using ByteVector = hn::Vec<Bytes>;
using ShortVector = hn::Vec<Shorts>;
using WordVector = hn::Vec<Words>;

constexpr std::size_t kLanes = hn::MaxLanes(Bytes());
constexpr std::size_t kHalf = kLanes / 2;
static_assert(kBlurBlock % kLanes == 0);

// Means ------------------------------------------------------------------------------------------

/// Two vectors of sums divided by a run's n. A radius of 0 is a copy: its 65536 has 17 bits.
class Divider {
 public:
  explicit Divider(int radius)
      : reciprocal_(hn::Set(Shorts(), kBlurMeans.line[radius].reciprocal)) {}

  template <bool kCopy>
  ByteVector divide(ShortVector low, ShortVector high) const {
    if constexpr (kCopy) {
      return hn::ConcatEven(Bytes(), hn::BitCast(Bytes(), high), hn::BitCast(Bytes(), low));
    } else {
#if ALG_IS_NEON()
      // Sums and reciprocals have 15 bits. The doubled product's upper half has one bit too many.
      const int16x8_t by = vreinterpretq_s16_u16(reciprocal_.raw);
      const int16x8_t first = vqdmulhq_s16(vreinterpretq_s16_u16(low.raw), by);
      const int16x8_t second = vqdmulhq_s16(vreinterpretq_s16_u16(high.raw), by);
      return ByteVector(vshrn_high_n_u16(vshrn_n_u16(vreinterpretq_u16_s16(first), 1),
                                         vreinterpretq_u16_s16(second), 1));
#else
      return hn::ConcatEven(Bytes(), hn::BitCast(Bytes(), hn::MulHigh(high, reciprocal_)),
                            hn::BitCast(Bytes(), hn::MulHigh(low, reciprocal_)));
#endif
    }
  }

 private:
  ShortVector reciprocal_;
};

template <bool kCopy>
void meansAcrossRun(const BlurRun& run, const uint16_t* prefix, uint8_t* row) {
  const Shorts d;
  const Divider divider(run.radius);
  const std::size_t reach = kBlurElements * static_cast<std::size_t>(run.radius);
  const uint16_t* from = prefix + run.begin - reach;
  const uint16_t* to = prefix + run.begin + reach + kBlurElements;
  uint8_t* means = row + run.at;
  const std::size_t count = run.count;
  for (std::size_t i = 0; i < count; i += kLanes) {
    const auto low = hn::Sub(hn::LoadU(d, to + i), hn::LoadU(d, from + i));
    const auto high = hn::Sub(hn::LoadU(d, to + i + kHalf), hn::LoadU(d, from + i + kHalf));
    hn::StoreU(divider.divide<kCopy>(low, high), Bytes(), means + i);
  }
}

void meansAcrossVector(const BlurRun* runs, int runCount, const uint16_t* prefix, uint8_t* row) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    (run->radius == 0 ? meansAcrossRun<true> : meansAcrossRun<false>)(*run, prefix, row);
  }
}

void sumsAcrossVector(const BlurRun* runs, int runCount, const uint16_t* prefix, uint16_t* row) {
  const Shorts d;
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const std::size_t reach = kBlurElements * static_cast<std::size_t>(run->radius);
    const uint16_t* from = prefix + run->begin - reach;
    const uint16_t* to = prefix + run->begin + reach + kBlurElements;
    uint16_t* sums = row + run->at;
    const std::size_t count = run->count;
    for (std::size_t i = 0; i < count; i += kLanes) {
      const auto low = hn::Sub(hn::LoadU(d, to + i), hn::LoadU(d, from + i));
      const auto high = hn::Sub(hn::LoadU(d, to + i + kHalf), hn::LoadU(d, from + i + kHalf));
      hn::StoreU(low, d, sums + i);
      hn::StoreU(high, d, sums + i + kHalf);
    }
  }
}

// Column sums ------------------------------------------------------------------------------------

struct ShortPair {
  ShortVector low, high;
};

ShortPair moved(const uint16_t* sums, const uint8_t* entering, const uint8_t* leaving) {
  const Shorts d;
  const auto low = hn::LoadU(d, sums);
  const auto high = hn::LoadU(d, sums + kHalf);
#if ALG_IS_NEON()
  const uint8x16_t in = vld1q_u8(entering);
  const uint8x16_t out = vld1q_u8(leaving);
  return {ShortVector(vsubw_u8(vaddw_u8(low.raw, vget_low_u8(in)), vget_low_u8(out))),
          ShortVector(vsubw_high_u8(vaddw_high_u8(high.raw, in), out))};
#else
  const HalfBytes half;
  const auto load = [&](const uint8_t* from)
                        HWY_ATTR { return hn::PromoteTo(d, hn::LoadU(half, from)); };
  return {hn::Sub(hn::Add(low, load(entering)), load(leaving)),
          hn::Sub(hn::Add(high, load(entering + kHalf)), load(leaving + kHalf))};
#endif
}

template <bool kCopy>
void finishMeansRun(const BlurRun& run, const uint8_t* ring, uint16_t* sums, uint8_t* bytes) {
  const Shorts d;
  const Divider divider(run.radius);
  const uint8_t* entering = ring + run.entering + run.at;
  const uint8_t* leaving = ring + run.leaving + run.at;
  uint16_t* sum = sums + run.at;
  uint8_t* out = bytes + run.begin;
  const std::size_t count = run.count;
  for (std::size_t i = 0; i < count; i += kLanes) {
    const ShortPair pair = moved(sum + i, entering + i, leaving + i);
    hn::StoreU(pair.low, d, sum + i);
    hn::StoreU(pair.high, d, sum + i + kHalf);
    hn::StoreU(divider.divide<kCopy>(pair.low, pair.high), Bytes(), out + i);
  }
}

void finishMeansVector(const BlurRun* runs, int runCount, const uint8_t* ring, uint16_t* sums,
                       uint8_t* bytes) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    (run->radius == 0 ? finishMeansRun<true> : finishMeansRun<false>)(*run, ring, sums, bytes);
  }
}

#if ALG_IS_NEON()

constexpr auto& addSquaresVector = addSquaresPlain;

struct SquareFactors {
  explicit SquareFactors(int radius) : reciprocal(hn::Set(Words(), kBlurMeans.square[radius])) {}
  WordVector reciprocal;
};

// One vector of shorts: four times the centres, and the difference of sums across, which has 14
// bits and a sign.
ShortVector squareLanes(const uint16_t* entering, const uint16_t* leaving, const uint8_t* centres,
                        uint32_t* sums, const SquareFactors& factors) {
  const Shorts d;
  const Words words;
  const hn::Half<Shorts> half;
  const hn::RebindToSigned<Words> ints;
  const hn::RebindToSigned<Shorts> signedShorts;
  const hn::Half<hn::RebindToSigned<Shorts> > signedHalf;
  const auto centre = hn::ShiftLeft<2>(hn::PromoteTo(d, hn::LoadU(HalfBytes(), centres)));
  const auto step =
      hn::BitCast(signedShorts, hn::Sub(hn::LoadU(d, entering), hn::LoadU(d, leaving)));
  const auto weigh = [&](uint32_t* sum, auto stepHalf, auto centreHalf) HWY_ATTR {
    const auto total =
        hn::Add(hn::LoadU(words, sum), hn::BitCast(words, hn::PromoteTo(ints, stepHalf)));
    hn::StoreU(total, words, sum);
    return hn::Mul(hn::Add(total, hn::PromoteTo(words, centreHalf)), factors.reciprocal);
  };
  const auto low = weigh(sums, hn::LowerHalf(signedHalf, step), hn::LowerHalf(half, centre));
  const auto high =
      weigh(sums + kHalf / 2, hn::UpperHalf(signedHalf, step), hn::UpperHalf(half, centre));
  return hn::ConcatOdd(d, hn::BitCast(d, high), hn::BitCast(d, low));  // >> 16
}

#else

// Column sums are kept times the reciprocal, which has 14 bits: a step is one multiplication of
// pairs, and nothing is left to divide. Pairs lie as the unpacking of vectors leaves them.
struct SquareFactors {
  explicit SquareFactors(int radius)
      : step(pairs(static_cast<int>(kBlurMeans.square[radius]),
                   -static_cast<int>(kBlurMeans.square[radius]))),
        centre(hn::Set(Shorts(), static_cast<uint16_t>(2 * kBlurMeans.square[radius]))) {}

  static ShortVector pairs(int low, int high) {
    return hn::BitCast(Shorts(), hn::Set(Words(), (static_cast<uint32_t>(low) & 0xFFFF) |
                                                      static_cast<uint32_t>(high) << 16));
  }

  ShortVector step, centre;
};
static_assert(2 * kBlurMeans.square[0] <= 0x7FFF);

// sum + the sums of a's pairs, weighed by those of b.
HWY_INLINE WordVector addPairs(WordVector sum, ShortVector a, ShortVector b) {
#if ALG_IS_AVX512()
  return WordVector{_mm512_add_epi32(sum.raw, _mm512_madd_epi16(a.raw, b.raw))};
#else
  return WordVector{_mm256_add_epi32(sum.raw, _mm256_madd_epi16(a.raw, b.raw))};
#endif
}

HWY_INLINE ShortVector squareLanes(const uint16_t* entering, const uint16_t* leaving,
                                   const uint8_t* centres, uint32_t* sums,
                                   const SquareFactors& factors) {
  const Shorts d;
  const Words words;
  const auto in = hn::LoadU(d, entering);
  const auto out = hn::LoadU(d, leaving);
  const auto centre = hn::PromoteTo(d, hn::LoadU(HalfBytes(), centres));
  const auto low = addPairs(hn::LoadU(words, sums), hn::InterleaveLower(d, in, out), factors.step);
  const auto high =
      addPairs(hn::LoadU(words, sums + kHalf / 2), hn::InterleaveUpper(d, in, out), factors.step);
  hn::StoreU(low, words, sums);
  hn::StoreU(high, words, sums + kHalf / 2);
  const auto first = addPairs(low, hn::InterleaveLower(d, centre, centre), factors.centre);
  const auto second = addPairs(high, hn::InterleaveUpper(d, centre, centre), factors.centre);
  const auto lows = hn::ShiftRight<16>(first), highs = hn::ShiftRight<16>(second);
#if ALG_IS_AVX512()
  return ShortVector{_mm512_packus_epi32(lows.raw, highs.raw)};
#else
  return ShortVector{_mm256_packus_epi32(lows.raw, highs.raw)};
#endif
}

void addSquaresVector(const BlurRun& run, int weight, const uint16_t* row, uint32_t* sums) {
  const Shorts d;
  const Words words;
  const auto zero = hn::Zero(d);
  // A box has no more rows than its side: 15 bits.
  const auto factor =
      SquareFactors::pairs(weight * static_cast<int>(kBlurMeans.square[run.radius]), 0);
  const std::size_t count = run.count;
  for (std::size_t i = 0; i < count; i += kHalf) {
    const auto v = hn::LoadU(d, row + i);
    const std::size_t j = i + kHalf / 2;
    hn::StoreU(addPairs(hn::LoadU(words, sums + i), hn::InterleaveLower(d, v, zero), factor), words,
               sums + i);
    hn::StoreU(addPairs(hn::LoadU(words, sums + j), hn::InterleaveUpper(d, v, zero), factor), words,
               sums + j);
  }
}

#endif

void finishSquaresVector(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                         const uint8_t* centres, uint8_t* bytes) {
  const Bytes d;
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const SquareFactors factors(run->radius);
    const uint16_t* entering = ring + run->entering + run->at;
    const uint16_t* leaving = ring + run->leaving + run->at;
    const uint8_t* centre = centres + run->begin;
    uint32_t* sum = sums + run->at;
    uint8_t* out = bytes + run->begin;
    const std::size_t count = run->count;
    for (std::size_t i = 0; i < count; i += kLanes) {
      const std::size_t j = i + kHalf;
      const auto low = squareLanes(entering + i, leaving + i, centre + i, sum + i, factors);
      const auto high = squareLanes(entering + j, leaving + j, centre + j, sum + j, factors);
      hn::StoreU(hn::ConcatEven(d, hn::BitCast(d, high), hn::BitCast(d, low)), d, out + i);
    }
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void meansAcross(const BlurRun* runs, int runCount, const uint16_t* prefix, uint8_t* row) {
  ALG_DISPATCH(meansAcrossVector)(runs, runCount, prefix, row);
}

void sumsAcross(const BlurRun* runs, int runCount, const uint16_t* prefix, uint16_t* row) {
  ALG_DISPATCH(sumsAcrossVector)(runs, runCount, prefix, row);
}

void finishMeans(const BlurRun* runs, int runCount, const uint8_t* ring, uint16_t* sums,
                 uint8_t* bytes) {
  ALG_DISPATCH(finishMeansVector)(runs, runCount, ring, sums, bytes);
}

void addSquares(const BlurRun& run, int weight, const uint16_t* row, uint32_t* sums) {
  ALG_DISPATCH(addSquaresVector)(run, weight, row, sums);
}

void finishSquares(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                   const uint8_t* centres, uint8_t* bytes) {
  ALG_DISPATCH(finishSquaresVector)(runs, runCount, ring, sums, centres, bytes);
}

}  // namespace alg
#endif
