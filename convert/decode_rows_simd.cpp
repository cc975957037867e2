// Vector twins of the decoding row kernels, compiled once per vector target.
//
// Even and odd pixels are kept apart, so that chroma pairs match them lane by lane without being
// duplicated; a pair's arithmetic serves two pixels in each of two rows. A channel is the integer
// part of level + chroma, where level = 76310 (Y - 16). As 76310 is even, the last fraction bit
// never carries, and 15 bits of fraction are enough.
#define ALG_ALSO_AVX512
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "convert/bt601.h"
#include "convert/decode_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/decode_rows_simd.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& decodeRowVector = decodeRowPlain;
constexpr auto& decodeRowPairVector = decodeRowPairPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

#if ALG_IS_NEON()

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

// 2 v, limited to 16 bits. Cores shift, which compilers make of a plain addition, in one of two
// pipelines only.
HWY_INLINE uint16x8_t twice(uint16x8_t v) { return vqaddq_u16(v, v); }

// factor * sample + offset, as a product of 16 bits and the sample itself.
template <int32_t kFactor>
HWY_INLINE ChromaTerm gain(uint16x8_t sample) {
  constexpr int32_t kDivisor = divisorOf(kFactor);
  static_assert(kDivisor == 2 || kDivisor == 3);
  constexpr auto kRest = static_cast<uint16_t>(kFactor / kDivisor);
  const uint16x8_t times = kDivisor == 2 ? twice(sample) : vqaddq_u16(twice(sample), sample);
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
HWY_INLINE Level levelOf(uint16x8_t luma) {
  static_assert(bt601::kLumaGain % 2 == 0 && bt601::kLumaGain / 2 <= 0xFFFF);
  const uint16x8_t factors = twice(luma);
  constexpr auto kHalf = static_cast<uint16_t>(bt601::kLumaGain / 2);
  return {vmull_n_u16(vget_low_u16(factors), kHalf), vmull_high_n_u16(factors, kHalf)};
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
  const uint16x8_t columns = vreinterpretq_u16_u8(vld1q_u8(luma));
  // A mask that compilers know is applied by an instruction that needs a copy.
  const Level even = levelOf(vandq_u16(columns, opaque(vdupq_n_u16(0xFF))));
  const Level odd = levelOf(vshrq_n_u16(columns, 8));
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

#else  // AVX2 and AVX-512

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

#endif  // NEON or x86

// The format whose code serves another.
constexpr RowFormat codeOf(RowFormat format) {
  return ALG_IS_NEON() || format == RowFormat::kPackedUV ? format : RowFormat::kArgbUV;
}

template <RowFormat kFormat, bool kTwo>
void decodeFormat(RowFormat format, const uint8_t* const (&luma)[2], const uint8_t* chroma,
                  uint8_t* const (&pixels)[2], std::size_t width, bool stream = false) {
  const Chroma factors(format);
  // The last pixels of an even row form a block that overlaps the one before.
  const bool again = width >= kBlock && width % 2 == 0;
  const std::size_t end = again ? width : width - width % kBlock;
  constexpr std::size_t kBytes = pixelBytes(kFormat);
  const uint8_t *const first = luma[0], *const second = luma[1];
  uint8_t *const firstPixels = pixels[0], *const secondPixels = pixels[1];
  // From the second block on, words are stored to whole cache lines if that splits no pair.
  const std::size_t before = (0 - reinterpret_cast<std::uintptr_t>(firstPixels)) % 64;
  const bool aligns = !ALG_IS_NEON() && kBytes == 4 && again && before % 8 == 0;
  const std::size_t lead = aligns && before != 0 ? before / 4 : kBlock;
  // Past the caches go those that are nothing but whole cache lines, in both rows.
  const bool linesAlike = kTwo && (secondPixels - firstPixels) % 64 == 0;
  const std::size_t streamed = stream && aligns && linesAlike ? before / 4 : end;
  const auto decodeAt = [&](std::size_t x, auto streams) HWY_ATTR {
    const ChromaTerms terms = chromaTerms<kFormat>(factors, chroma + x);
    decodeBlock<kFormat, streams>(first + x, terms, firstPixels + kBytes * x);
    if constexpr (kTwo) {
      decodeBlock<kFormat, streams>(second + x, terms, secondPixels + kBytes * x);
    }
  };
  for (std::size_t at = 0; at < end; at += at == 0 ? lead : kBlock) {
    const std::size_t x = at < width - kBlock ? at : width - kBlock;
    if constexpr (!ALG_IS_NEON() && kTwo && kBytes == 4) {
      if (x == at && x >= streamed) {
        decodeAt(x, std::true_type());
        continue;
      }
    }
    decodeAt(x, std::false_type());
  }
  if (end == width) {
    return;
  }
  // Fewer pixels than a block go through copies, so that nothing beyond the row is read or written.
  const std::size_t rest = width - end;
  uint8_t lumaTail[2][kBlock] = {}, chromaTail[kBlock] = {}, pixelTail[2][kBytes * kBlock];
  std::memcpy(chromaTail, chroma + end, rest + rest % 2);
  for (int row = 0; row < (kTwo ? 2 : 1); ++row) {
    std::memcpy(lumaTail[row], luma[row] + end, rest);
  }
  decodeFormat<kFormat, kTwo>(format, {lumaTail[0], lumaTail[1]}, chromaTail,
                              {pixelTail[0], pixelTail[1]}, kBlock);
  for (int row = 0; row < (kTwo ? 2 : 1); ++row) {
    std::memcpy(pixels[row] + kBytes * end, pixelTail[row], kBytes * rest);
  }
}

template <bool kTwo>
void decodeAny(RowFormat format, const uint8_t* const (&luma)[2], const uint8_t* chroma,
               uint8_t* const (&pixels)[2], std::size_t width, bool stream) {
  switch (format) {
    case RowFormat::kArgbUV:
      return decodeFormat<codeOf(RowFormat::kArgbUV), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kArgbVU:
      return decodeFormat<codeOf(RowFormat::kArgbVU), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kRgbaUV:
      return decodeFormat<codeOf(RowFormat::kRgbaUV), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kRgbaVU:
      return decodeFormat<codeOf(RowFormat::kRgbaVU), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kPackedUV:
      return decodeFormat<RowFormat::kPackedUV, kTwo>(format, luma, chroma, pixels, width);
  }
}

void decodeRowVector(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                     std::size_t width) {
  decodeAny<false>(format, {luma, nullptr}, chroma, {pixels, nullptr}, width, false);
}

void decodeRowPairVector(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                         const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                         std::size_t width, bool stream) {
  decodeAny<true>(format, {luma, luma + lumaStride}, chroma, {pixels, pixels + pixelStride}, width,
                  stream);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void decodeRow(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
               std::size_t width) {
  ALG_DISPATCH(decodeRowVector)(format, luma, chroma, pixels, width);
}

void decodeRowPair(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                   const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                   std::size_t width, bool stream) {
  ALG_DISPATCH(decodeRowPairVector)
  (format, luma, lumaStride, chroma, pixels, pixelStride, width, stream);
}

}  // namespace alg
#endif
