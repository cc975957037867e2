// Vector twins of the box blur's row kernels, compiled once per vector target.
//
// Prefix sums go four pixels a step, two to a vector of 16-bit lanes. Only the short chain of
// carries is serial:
//
//   lanes       0    1    2    3     4     5     6 7
//   pixels      a0   a1   a2   b0    b1    b2    - -
//   + 3 up      a0   a1   a2   a0+b0 a1+b1 a2+b2 ..    + carry of all pixels before
//   total       the lanes 3, 4, 5 twice                goes to the carry
//
// Vectors are stored every six lanes; the next one overwrites the rest.

#include "base/image_size.h"
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

constexpr auto& sumUpVector = sumUpPlain;
constexpr auto& meansAcrossVector = meansAcrossPlain;
constexpr auto& sumsAcrossVector = sumsAcrossPlain;
constexpr auto& finishMeansVector = finishMeansPlain;
constexpr auto& finishSquaresVector = finishSquaresPlain;
constexpr auto& dropAlphaVector = dropAlphaPlain;
constexpr auto& addAlphaVector = addAlphaPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Shorts = hn::Repartition<uint16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using HalfBytes = hn::Half<Bytes>;  // as many bytes as there are short lanes
using ByteVector = hn::Vec<Bytes>;
using ShortVector = hn::Vec<Shorts>;
using WordVector = hn::Vec<Words>;
using Bytes16 = hn::Full128<uint8_t>;
using Shorts8 = hn::Full128<uint16_t>;

constexpr std::size_t kLanes = hn::MaxLanes(Bytes());
constexpr std::size_t kHalf = kLanes / 2;
static_assert(kBlurBlock % kLanes == 0);
constexpr std::size_t kStep = 4;  // pixels in 16 bytes of either kind
constexpr uint8_t kNone = 0x80;   // the index of a zero

// Prefix sums ------------------------------------------------------------------------------------

// Where the bytes of two pixels come from, the first one being pixel `first` of a vector.
template <int kBytes>
hn::Vec<Bytes16> pixelPair(int first) {
  HWY_ALIGN uint8_t from[16];
  for (int lane = 0; lane < 8; ++lane) {
    const int k = kBytes == kPackedBytes ? 2 - lane % 3 : lane % 3;
    const int byte = (first + lane / 3) * kBytes + k;
    from[2 * lane] = lane < 6 ? static_cast<uint8_t>(byte) : kNone;
    from[2 * lane + 1] = kNone;
  }
  return hn::Load(Bytes16(), from);
}

template <int kBytes>
std::size_t sumUpSteps(const uint8_t* row, std::size_t width, uint16_t* prefix) {
  const Bytes16 bytes;
  const Shorts8 shorts;
  const auto pair0 = pixelPair<kBytes>(0);
  const auto pair1 = pixelPair<kBytes>(2);
  HWY_ALIGN static constexpr uint8_t kSecond[16] = {6, 7, 8,  9,  10,    11,    6,     7,
                                                    8, 9, 10, 11, kNone, kNone, kNone, kNone};
  HWY_ALIGN static constexpr uint8_t kFirst[16] = {0, 1, 2, 3, 4,     5,     0,     1,
                                                   2, 3, 4, 5, kNone, kNone, kNone, kNone};
  const auto second = hn::Load(bytes, kSecond);
  const auto lookUp = [=](auto from, auto index) HWY_ATTR {
    return hn::BitCast(shorts, hn::TableLookupBytesOr0(hn::BitCast(bytes, from), index));
  };
  const auto scan = [=](auto pixels) HWY_ATTR {
    return hn::Add(pixels,
                   hn::BitCast(shorts, hn::ShiftLeftBytes<6>(bytes, hn::BitCast(bytes, pixels))));
  };
  auto carry = lookUp(hn::LoadU(shorts, prefix), hn::Load(bytes, kFirst));
  prefix += kBlurElements;
  // A load is 16 bytes, also where four pixels have only 12.
  constexpr std::size_t kReach = kBytes == kPackedBytes ? 6 : kStep;
  const auto step = [=](const uint8_t* from, auto before, uint16_t* to) HWY_ATTR {
    const auto pixels = hn::LoadU(bytes, from);
    const auto sums0 = scan(lookUp(pixels, pair0));
    const auto sums1 = scan(lookUp(pixels, pair1));
    const auto middle = hn::Add(before, lookUp(sums0, second));
    hn::StoreU(hn::Add(sums0, before), shorts, to);
    hn::StoreU(hn::Add(sums1, middle), shorts, to + 6);
    return hn::Add(middle, lookUp(sums1, second));
  };
  std::size_t x = 0;
  for (; x + kStep + kReach <= width; x += 2 * kStep) {
    carry = step(row + kBytes * x, carry, prefix + kBlurElements * x);
    carry = step(row + kBytes * (x + kStep), carry, prefix + kBlurElements * (x + kStep));
  }
  for (; x + kReach <= width; x += kStep) {
    carry = step(row + kBytes * x, carry, prefix + kBlurElements * x);
  }
  return x;
}

void sumUpVector(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix) {
  const bool words = pixels == BlurPixels::kWords;
  const std::size_t done = words ? sumUpSteps<kArgbBytes>(row, width, prefix)
                                 : sumUpSteps<kPackedBytes>(row, width, prefix);
  sumUpPlain(pixels, row + static_cast<std::size_t>(words ? kArgbBytes : kPackedBytes) * done,
             width - done, prefix + kBlurElements * done);
}

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

// One vector of shorts: four times the centres, and the difference of sums across, which has 14
// bits and a sign.
ShortVector squareLanes(const uint16_t* entering, const uint16_t* leaving, const uint8_t* centres,
                        uint32_t* sums, WordVector reciprocal) {
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
    return hn::Mul(hn::Add(total, hn::PromoteTo(words, centreHalf)), reciprocal);
  };
  const auto low = weigh(sums, hn::LowerHalf(signedHalf, step), hn::LowerHalf(half, centre));
  const auto high =
      weigh(sums + kHalf / 2, hn::UpperHalf(signedHalf, step), hn::UpperHalf(half, centre));
  return hn::ConcatOdd(d, hn::BitCast(d, high), hn::BitCast(d, low));  // >> 16
}

void finishSquaresVector(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                         const uint8_t* centres, uint8_t* bytes) {
  const Bytes d;
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const auto reciprocal = hn::Set(Words(), kBlurMeans.square[run->radius]);
    const uint16_t* entering = ring + run->entering + run->at;
    const uint16_t* leaving = ring + run->leaving + run->at;
    const uint8_t* centre = centres + run->begin;
    uint32_t* sum = sums + run->at;
    uint8_t* out = bytes + run->begin;
    const std::size_t count = run->count;
    for (std::size_t i = 0; i < count; i += kLanes) {
      const std::size_t j = i + kHalf;
      const auto low = squareLanes(entering + i, leaving + i, centre + i, sum + i, reciprocal);
      const auto high = squareLanes(entering + j, leaving + j, centre + j, sum + j, reciprocal);
      hn::StoreU(hn::ConcatEven(d, hn::BitCast(d, high), hn::BitCast(d, low)), d, out + i);
    }
  }
}

// Words ------------------------------------------------------------------------------------------

#if ALG_IS_NEON()

constexpr std::size_t kWordStep = 16;

HWY_INLINE void dropAlphas(const uint8_t* words, uint8_t* bytes) {
  const uint8x16x4_t all = vld4q_u8(words);
  const uint8x16x3_t colours{all.val[0], all.val[1], all.val[2]};
  vst3q_u8(bytes, colours);
}

HWY_INLINE void addAlphas(const uint8_t* bytes, uint8_t* words) {
  const uint8x16x3_t colours = vld3q_u8(bytes);
  const uint8x16x4_t all{colours.val[0], colours.val[1], colours.val[2], vdupq_n_u8(0)};
  vst4q_u8(words, all);
}

#else

// 16 bytes are read and written each; those of the row end with the last word.
constexpr std::size_t kWordStep = kStep;

HWY_INLINE void dropAlphas(const uint8_t* words, uint8_t* bytes) {
  HWY_ALIGN static constexpr uint8_t kFrom[16] = {0,  1,  2,  4,  5,     6,     8,     9,
                                                  10, 12, 13, 14, kNone, kNone, kNone, kNone};
  const Bytes16 d;
  hn::StoreU(hn::TableLookupBytesOr0(hn::LoadU(d, words), hn::Load(d, kFrom)), d, bytes);
}

HWY_INLINE void addAlphas(const uint8_t* bytes, uint8_t* words) {
  HWY_ALIGN static constexpr uint8_t kFrom[16] = {0, 1, 2, kNone, 3, 4,  5,  kNone,
                                                  6, 7, 8, kNone, 9, 10, 11, kNone};
  const Bytes16 d;
  hn::StoreU(hn::TableLookupBytesOr0(hn::LoadU(d, bytes), hn::Load(d, kFrom)), d, words);
}

#endif

void dropAlphaVector(const uint8_t* words, std::size_t width, uint8_t* bytes) {
  std::size_t x = 0;
  for (; x + kWordStep <= width; x += kWordStep) {
    dropAlphas(words + kArgbBytes * x, bytes + kBlurElements * x);
  }
  dropAlphaPlain(words + kArgbBytes * x, width - x, bytes + kBlurElements * x);
}

void addAlphaVector(const uint8_t* bytes, std::size_t width, uint8_t* words) {
  std::size_t x = 0;
  for (; x + kWordStep <= width; x += kWordStep) {
    addAlphas(bytes + kBlurElements * x, words + kArgbBytes * x);
  }
  addAlphaPlain(bytes + kBlurElements * x, width - x, words + kArgbBytes * x);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void sumUp(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix) {
  ALG_DISPATCH(sumUpVector)(pixels, row, width, prefix);
}

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

void finishSquares(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                   const uint8_t* centres, uint8_t* bytes) {
  ALG_DISPATCH(finishSquaresVector)(runs, runCount, ring, sums, centres, bytes);
}

void dropAlpha(const uint8_t* words, std::size_t width, uint8_t* bytes) {
  ALG_DISPATCH(dropAlphaVector)(words, width, bytes);
}

void addAlpha(const uint8_t* bytes, std::size_t width, uint8_t* words) {
  ALG_DISPATCH(addAlphaVector)(bytes, width, words);
}

}  // namespace alg
#endif
