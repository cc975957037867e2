// How the decoding row kernels do a block of pixels with AVX2 and AVX-512; included by their file,
// once per vector target.
#if defined(ALG_DECODE_X86_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_DECODE_X86_INL_H_
#undef ALG_DECODE_X86_INL_H_
#else
#define ALG_DECODE_X86_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "convert/bt601.h"
#include "convert/row_format.h"
#include "hwy/cache_control.h"
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_IS_AVX512() || ALG_IS_AVX2()

namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

using Shorts = hn::Repartition<int16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using ShortVector = hn::Vec<Shorts>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // pixels a step

// Where there are signed comparisons only, fractions have their top bit flipped for them.
#if ALG_IS_AVX512()
constexpr int kFlip = 0;
using Compared = hn::Repartition<uint16_t, Bytes>;
#else
constexpr int kFlip = 0x8000;
using Compared = Shorts;
#endif

// The chroma part of a channel for half a block of pairs: integer part, and how far its fraction is
// below the largest.
struct ChromaTerm {
  ShortVector whole, missing;
};

// Of a pixel's bytes.
struct ChromaTerms {
  ChromaTerm first, green, last;
};

HWY_INLINE ShortVector set(int value) { return hn::Set(Shorts(), static_cast<int16_t>(value)); }

// Samples are multiplied by five as they are widened: factors divided by five fit 16 signed bits,
// so that the upper half of one product is the integer part and the lower half of another the
// fraction. Truncating the quotient changes no integer part; for the fraction, 5 has an inverse
// modulo 65536.
constexpr int kTimes = 5;
constexpr int64_t kInverse = 52429;
static_assert(kTimes * kInverse % 65536 == 1);

constexpr int32_t quotientOf(int32_t factor) { return factor / kTimes; }

constexpr bool exact(int32_t factor) {
  bool same = quotientOf(factor) >= -0x8000 && quotientOf(factor) <= 0x7FFF;
  for (int32_t sample = -128; sample < 128; ++sample) {
    same = same && (kTimes * sample * quotientOf(factor)) >> 16 == (sample * factor) >> 16;
  }
  return same;
}

static_assert(exact(bt601::kBlueFromU) && exact(bt601::kGreenFromU) && exact(bt601::kGreenFromV) &&
              exact(bt601::kRedFromV) && exact(bt601::kLumaGain));

// What five times a sample is multiplied by for the integer part and for the fraction.
struct Factor {
  HWY_INLINE explicit Factor(int32_t factor)
      : quotient(set(quotientOf(factor))), rest(set(static_cast<int16_t>(factor * kInverse))) {}

  HWY_INLINE ShortVector wholeOf(ShortVector five) const { return hn::MulHigh(five, quotient); }
  HWY_INLINE ShortVector fractionOf(ShortVector five) const { return hn::Mul(five, rest); }
  HWY_INLINE ShortVector missingOf(ShortVector five) const {
    return hn::Xor(fractionOf(five), set(0xFFFF ^ kFlip));
  }

  ShortVector quotient, rest;
};

// Formats of words differ in their factors only, which saves code: one sample makes a pixel's first
// byte, the other one its last, both make green.
struct Chroma {
  HWY_INLINE explicit Chroma(RowFormat format)
      : pickFirst(set(hasRedFirst(format) != hasVFirst(format) ? kTimes << 8 : kTimes)),
        pickLast(set(hasRedFirst(format) != hasVFirst(format) ? kTimes : kTimes << 8)),
        first(hasRedFirst(format) ? bt601::kRedFromV : bt601::kBlueFromU),
        last(hasRedFirst(format) ? bt601::kBlueFromU : bt601::kRedFromV),
        greenFromFirst(hasRedFirst(format) ? bt601::kGreenFromV : bt601::kGreenFromU),
        greenFromLast(hasRedFirst(format) ? bt601::kGreenFromU : bt601::kGreenFromV) {}

  ShortVector pickFirst, pickLast;  // times five, out of a pair
  Factor first, last, greenFromFirst, greenFromLast;
};

// whole + 1 where a > b, of fractions.
HWY_INLINE ShortVector carry(ShortVector whole, ShortVector a, ShortVector b) {
  const Compared d;
  const auto carries = hn::Gt(hn::BitCast(d, a), hn::BitCast(d, b));
#if ALG_IS_AVX512()
  return ShortVector{_mm512_mask_add_epi16(whole.raw, carries.raw, whole.raw, set(1).raw)};
#else
  return hn::Sub(whole, hn::VecFromMask(Shorts(), carries));  // the mask is -1
#endif
}

// Samples of a block as even (lower) and odd (upper) bytes of 16-bit lanes. Unpacking yields pixel
// words in groups of four, from each 16 bytes of the vector in turn: samples are placed here so
// that the words come out in order.
template <RowFormat kFormat>
HWY_INLINE ShortVector loadSamples(const uint8_t* samples) {
  const ByteVector bytes = hn::LoadU(Bytes(), samples);
  if constexpr (kFormat == RowFormat::kPackedUV) {
    return hn::BitCast(Shorts(), bytes);
  } else {
#if ALG_IS_AVX512()
    alignas(64) static constexpr int32_t kFours[] = {0, 4, 8,  12, 1, 5, 9,  13,
                                                     2, 6, 10, 14, 3, 7, 11, 15};
#else
    alignas(32) static constexpr int32_t kFours[] = {0, 2, 4, 6, 1, 3, 5, 7};
#endif
    const Words words;
    return hn::BitCast(Shorts(), hn::TableLookupLanes(hn::BitCast(words, bytes),
                                                      hn::SetTableIndices(words, kFours)));
  }
}

// Five times the difference between the even or the odd bytes, as `pick` says, and an offset.
template <int kOffset>
HWY_INLINE ShortVector fiveTimes(ShortVector samples, ShortVector pick) {
  const Bytes d;
  return hn::Sub(ops::weighPairs(hn::BitCast(d, samples), hn::BitCast(d, pick)),
                 set(kTimes * kOffset));
}

HWY_INLINE ChromaTerm gain(const Factor& factor, ShortVector five) {
  return {factor.wholeOf(five), factor.missingOf(five)};
}

template <RowFormat kFormat>
HWY_INLINE ChromaTerms chromaTerms(const Chroma& c, const uint8_t* chroma) {
  const ShortVector pairs = loadSamples<kFormat>(chroma);
  const ShortVector first = fiveTimes<bt601::kChromaOffset>(pairs, c.pickFirst);
  const ShortVector last = fiveTimes<bt601::kChromaOffset>(pairs, c.pickLast);
  // Green has two products. When their fractions carry, what is missing wraps and grows.
  const ShortVector of1 = c.greenFromFirst.missingOf(first);
  const ShortVector ofBoth = hn::Sub(of1, c.greenFromLast.fractionOf(last));
  const ShortVector whole = hn::Add(c.greenFromFirst.wholeOf(first), c.greenFromLast.wholeOf(last));
  return {gain(c.first, first), {carry(whole, ofBoth, of1), ofBoth}, gain(c.last, last)};
}

// 76310 (Y - 16): integer part and fraction.
struct Level {
  ShortVector whole, fraction;
};

HWY_INLINE Level levelOf(ShortVector five) {
  static_assert(bt601::kLumaGain % kTimes == 0);  // exact for any luma
  const Factor gain(bt601::kLumaGain);
  const ShortVector fraction = gain.fractionOf(five);
  return {gain.wholeOf(five), kFlip != 0 ? hn::Xor(fraction, set(kFlip)) : fraction};
}

// Integer part of the sum.
HWY_INLINE ShortVector channel(const Level& level, const ChromaTerm& term) {
  return carry(hn::Add(level.whole, term.whole), level.fraction, term.missing);
}

#if ALG_IS_AVX512()

// Where the pixels whose bytes are at home in each lane come from, for each channel: of 16 bytes
// the lower half has even pixels, the upper half odd ones.
struct Homes {
  constexpr Homes() {
    for (std::size_t i = 0; i < kBlock; ++i) {
      const std::size_t from = i / 16 * 16 + i % 16 / 2 + i % 2 * 8;
      for (std::size_t c = 0; c < kPackedBytes; ++c) {
        of[c][(kPackedBytes * i + c) % kBlock] = static_cast<uint8_t>(from);
      }
    }
  }
  alignas(64) uint8_t of[kPackedBytes][kBlock] = {};
};
constexpr Homes kHomes;

HWY_INLINE void storePacked(ByteVector b, ByteVector g, ByteVector r, uint8_t* pixels) {
  const auto home = [](int c, ByteVector v) HWY_ATTR {
    return ByteVector{_mm512_permutexvar_epi8(hn::Load(Bytes(), kHomes.of[c]).raw, v.raw)};
  };
  planes::store({{home(0, b), home(1, g), home(2, r)}}, pixels);
}

#else

// Pixels B, G, R from channels whose halves hold eight even, then eight odd pixels each:
//
//   byte n of a half's 48     0  1  2  3  4  5  6  7  8 ...   channel n mod 3
//   its byte in the channel   0  0  0  8  8  8  1  1  1 ...   pixel n / 3
//
// The 48 bytes are three parts of 16. At byte i the three parts take each channel once, so that a
// single shuffle puts all bytes of a channel into their columns, and each part selects among the
// channels.
HWY_INLINE void storePacked(ByteVector b, ByteVector g, ByteVector r, uint8_t* pixels) {
  const Bytes d;
  static constexpr uint8_t kColumns[] = {5,  10, 0, 13, 3,  8, 6,  11, 1,
                                         14, 4,  9, 7,  12, 2, 15, 5,  10};
  static constexpr uint8_t kPicks[] = {0xFF, 0, 0, 0xFF, 0, 0, 0xFF, 0, 0,
                                       0xFF, 0, 0, 0xFF, 0, 0, 0xFF, 0, 0};
  b = hn::TableLookupBytes(b, hn::LoadDup128(d, kColumns + 2));
  g = hn::TableLookupBytes(g, hn::LoadDup128(d, kColumns + 1));
  r = hn::TableLookupBytes(r, hn::LoadDup128(d, kColumns));
  const auto pick = [&](int column)
                        HWY_ATTR { return hn::MaskFromVec(hn::LoadDup128(d, kPicks + column)); };
  const auto first = pick(0), second = pick(2);  // columns 0 and 1 modulo 3
  const ByteVector part0 = hn::IfThenElse(first, b, hn::IfThenElse(second, g, r));
  const ByteVector part1 = hn::IfThenElse(first, g, hn::IfThenElse(second, r, b));
  const ByteVector part2 = hn::IfThenElse(first, r, hn::IfThenElse(second, b, g));
  constexpr std::size_t kBytes = hn::MaxLanes(d);
  hn::StoreU(hn::ConcatLowerLower(d, part1, part0), d, pixels);
  hn::StoreU(hn::ConcatUpperLower(d, part0, part2), d, pixels + kBytes);
  hn::StoreU(hn::ConcatUpperUpper(d, part2, part1), d, pixels + 2 * kBytes);
}

#endif

// Words of such channels and 255; each unpacking doubles the unit.
template <bool kStream>
HWY_INLINE void storeWords(ByteVector b, ByteVector g, ByteVector r, uint8_t* pixels) {
  const Bytes d;
  const hn::Repartition<uint16_t, Bytes> pairs;
  const hn::Repartition<uint32_t, Bytes> words;
  const ByteVector opaque = hn::Set(d, 0xFF);
  // Lower bytes are the even pixels.
  const auto evenBg = hn::BitCast(pairs, hn::InterleaveLower(d, b, g));
  const auto evenRa = hn::BitCast(pairs, hn::InterleaveLower(d, r, opaque));
  const auto oddBg = hn::BitCast(pairs, hn::InterleaveUpper(d, b, g));
  const auto oddRa = hn::BitCast(pairs, hn::InterleaveUpper(d, r, opaque));
  const auto storeHalf = [&](auto even, auto odd, uint8_t* to) HWY_ATTR {
    const auto evenWords = hn::BitCast(words, even), oddWords = hn::BitCast(words, odd);
    const auto low = hn::BitCast(d, hn::InterleaveLower(words, evenWords, oddWords));
    const auto high = hn::BitCast(d, hn::InterleaveUpper(words, evenWords, oddWords));
    if constexpr (kStream) {
      hn::Stream(low, d, to);
      hn::Stream(high, d, to + hn::MaxLanes(d));
    } else {
      hn::StoreU(low, d, to);
      hn::StoreU(high, d, to + hn::MaxLanes(d));
    }
  };
  storeHalf(hn::InterleaveLower(pairs, evenBg, evenRa), hn::InterleaveLower(pairs, oddBg, oddRa),
            pixels);
  storeHalf(hn::InterleaveUpper(pairs, evenBg, evenRa), hn::InterleaveUpper(pairs, oddBg, oddRa),
            pixels + 2 * hn::MaxLanes(d));
}

template <RowFormat kFormat, bool kStream>
HWY_INLINE void decodeBlock(const uint8_t* luma, const ChromaTerms& terms, uint8_t* pixels) {
  if constexpr (!kStream) {
    // Stores wait for their cache lines, which the hardware prefetcher does not fetch early enough.
    constexpr std::size_t kAhead = 384;  // bytes; prefetching beyond the row's end is harmless
    for (std::size_t line = 0; line < pixelBytes(kFormat) * kBlock; line += 64) {
      __builtin_prefetch(pixels + kAhead + line, 1);
    }
  }
  const ShortVector samples = loadSamples<kFormat>(luma);
  const Level even = levelOf(fiveTimes<bt601::kLumaOffset>(samples, set(kTimes)));
  const Level odd = levelOf(fiveTimes<bt601::kLumaOffset>(samples, set(kTimes << 8)));
  const auto both = [&](const ChromaTerm& term) HWY_ATTR {  // saturated
    return ops::join(channel(even, term), channel(odd, term));
  };
  if constexpr (kFormat == RowFormat::kPackedUV) {
    storePacked(both(terms.first), both(terms.green), both(terms.last), pixels);
  } else {
    storeWords<kStream>(both(terms.first), both(terms.green), both(terms.last), pixels);
  }
}

}  // namespace

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_DECODE_X86_INL_H_
