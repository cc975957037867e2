// How the encoding row kernels do a block of pixels with AVX2 and AVX-512; included by their file,
// once per vector target.
#if defined(ALG_ENCODE_X86_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_ENCODE_X86_INL_H_
#undef ALG_ENCODE_X86_INL_H_
#else
#define ALG_ENCODE_X86_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "convert/bt601.h"
#include "convert/byte_weights.h"
#include "convert/row_format.h"
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_IS_AVX512() || ALG_IS_AVX2()

namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Shorts = hn::Repartition<int16_t, Bytes>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using ShortVector = hn::Vec<Shorts>;
using IntVector = hn::Vec<Ints>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // pixels a step
constexpr std::size_t kPart = kBlock / 4;              // pixels of a vector of 32-bit lanes

constexpr bt601::Weights firstOfPair(RowFormat format) {
  return hasVFirst(format) ? bt601::kV : bt601::kU;
}

constexpr bt601::Weights secondOfPair(RowFormat format) {
  return hasVFirst(format) ? bt601::kU : bt601::kV;
}

#if ALG_IS_AVX512()

// Sixteen pixels, each with its bytes in a 32-bit lane; the fourth is ignored.
using Pixels = hn::Vec<Bytes>;

// The last part of packed pixels is at the end of the load, so that nothing beyond the block is
// read.
template <RowFormat kFormat>
HWY_INLINE Pixels loadPixels(const uint8_t* pixels, std::size_t part) {
  const uint8_t* from = pixels + pixelBytes(kFormat) * kPart * part;
  if constexpr (kFormat == RowFormat::kPackedUV) {
    struct Order {
      constexpr Order(std::size_t early) {
        for (std::size_t i = 0; i < kBlock; ++i) {
          bytes[i] = static_cast<uint8_t>(early + i / 4 * 3 + i % 4);
        }
      }
      alignas(64) uint8_t bytes[kBlock] = {};
    };
    static constexpr Order kOrders[] = {0, kPart};
    const std::size_t last = part == 3 ? 1 : 0;
    const auto bytes = hn::LoadU(Bytes(), from - kPart * last);
    return Pixels{_mm512_permutexvar_epi8(hn::Load(Bytes(), kOrders[last].bytes).raw, bytes.raw)};
  } else {
    return hn::LoadU(Bytes(), from);
  }
}

// A factor as 256 x upper + lower, both of 8 signed bits.
constexpr int32_t lowerOf(int32_t w) { return static_cast<int8_t>(w); }
constexpr int32_t upperOf(int32_t w) { return (w - lowerOf(w)) / 256; }

constexpr bool splits(const bt601::Weights& w, int32_t divisor) {
  const auto fits = [&](int32_t factor) {
    const int32_t upper = upperOf(factor / divisor);
    return upper >= -0x80 && upper < 0x80;
  };
  return fits(w.red) && fits(w.green) && fits(w.blue);
}
static_assert(splits(bt601::kY, 2) && splits(bt601::kU, 1) && splits(bt601::kV, 1));

struct Weights {
  HWY_INLINE explicit Weights(const ByteWeights& w)
      : upper(bytesOf(upperOf(w.first), upperOf(w.middle), upperOf(w.last))),
        lower(bytesOf(lowerOf(w.first), lowerOf(w.middle), lowerOf(w.last))) {}

  static HWY_INLINE hn::Vec<Bytes> bytesOf(int32_t first, int32_t middle, int32_t last) {
    const int32_t all = (first & 0xFF) | (middle & 0xFF) << 8 | (last & 0xFF) << 16;
    return hn::BitCast(Bytes(), hn::Set(Ints(), all));
  }

  hn::Vec<Bytes> upper, lower;
};

// Sum of the weighted bytes of each pixel.
HWY_INLINE IntVector weigh(const Pixels& p, const Weights& w) {
  const IntVector sum = ops::addProducts(hn::Zero(Ints()), p, w.upper);
  return ops::addProducts(hn::ShiftLeft<8>(sum), p, w.lower);
}

// The even pixels of two vectors.
HWY_INLINE Pixels evenOf(const Pixels& p, const Pixels& q) {
  return Pixels{_mm512_castps_si512(
      _mm512_shuffle_ps(_mm512_castsi512_ps(p.raw), _mm512_castsi512_ps(q.raw), 0x88))};
}

#else

// Eight pixels, each in a 32-bit lane of two shorts: its first and last byte; its middle byte and
// one that is ignored.
struct Pixels {
  ShortVector outer, middle;
};

// Lanes with the 12 bytes of four pixels each. The last part's are at the end of the load, so that
// nothing beyond the block is read.
template <RowFormat kFormat>
HWY_INLINE Pixels loadPixels(const uint8_t* pixels, std::size_t part) {
  const Bytes d;
  const Shorts shorts;
  const uint8_t* from = pixels + pixelBytes(kFormat) * kPart * part;
  if constexpr (kFormat == RowFormat::kPackedUV) {
    const hn::Half<Bytes> half;
    constexpr std::size_t kLaneBytes = pixelBytes(kFormat) * kPart / 2;
    const std::size_t early = part == 3 ? 4 : 0;
    auto bytes =
        hn::Combine(d, hn::LoadU(half, from + kLaneBytes - early), hn::LoadU(half, from - early));
    if (early != 0) {
      bytes = hn::ShiftRightBytes<4>(d, bytes);
    }
    constexpr uint8_t kNone = 0x80;
    alignas(16) static constexpr uint8_t kOuter[16] = {0, kNone, 2, kNone, 3, kNone, 5,  kNone,
                                                       6, kNone, 8, kNone, 9, kNone, 11, kNone};
    alignas(16) static constexpr uint8_t kMiddle[16] = {1,     kNone, kNone, kNone, 4,     kNone,
                                                        kNone, kNone, 7,     kNone, kNone, kNone,
                                                        10,    kNone, kNone, kNone};
    return {hn::BitCast(shorts, hn::TableLookupBytesOr0(bytes, hn::LoadDup128(d, kOuter))),
            hn::BitCast(shorts, hn::TableLookupBytesOr0(bytes, hn::LoadDup128(d, kMiddle)))};
  } else {
    const auto bytes = hn::LoadU(d, from);
    const ShortVector odd = hn::BitCast(
        shorts, hn::ShiftRight<8>(hn::BitCast(hn::Repartition<uint16_t, Bytes>(), bytes)));
    return {hn::And(hn::BitCast(shorts, bytes), hn::Set(shorts, 0xFF)), odd};
  }
}

struct Weights {
  HWY_INLINE explicit Weights(const ByteWeights& w)
      : outer(hn::Set(Ints(), (w.last << 16) | (w.first & 0xFFFF))),
        middle(hn::Set(Ints(), w.middle & 0xFFFF)) {}

  IntVector outer, middle;
};

// Sum of the weighted bytes of each pixel.
HWY_INLINE IntVector weigh(const Pixels& p, const Weights& w) {
  return IntVector{_mm256_add_epi32(_mm256_madd_epi16(p.outer.raw, w.outer.raw),
                                    _mm256_madd_epi16(p.middle.raw, w.middle.raw))};
}

// The even pixels of two vectors.
HWY_INLINE Pixels evenOf(const Pixels& p, const Pixels& q) {
  const auto even = [](ShortVector a, ShortVector b) HWY_ATTR {
    return ShortVector{_mm256_castps_si256(
        _mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0x88))};
  };
  return {even(p.outer, q.outer), even(p.middle, q.middle)};
}

#endif

// Packing leaves groups of four bytes that come from each 16 bytes of the vectors in turn: this
// restores their order.
HWY_INLINE void storeInOrder(hn::Vec<Bytes> fours, uint8_t* to) {
#if ALG_IS_AVX512()
  alignas(64) static constexpr int32_t kOrder[] = {0, 4, 8,  12, 1, 5, 9,  13,
                                                   2, 6, 10, 14, 3, 7, 11, 15};
#else
  alignas(32) static constexpr int32_t kOrder[] = {0, 4, 1, 5, 2, 6, 3, 7};
#endif
  const Words words;
  const auto ordered =
      hn::TableLookupLanes(hn::BitCast(words, fours), hn::SetTableIndices(words, kOrder));
  hn::StoreU(hn::BitCast(Bytes(), ordered), Bytes(), to);
}

constexpr ByteWeights halvesOf(const ByteWeights& w) {
  return {w.first / 2, w.middle / 2, w.last / 2};
}

// Formats of words differ in their factors only, which saves code. All of luma's are even: their
// halves fit 16 bits. Offsets are whole and can be added to bytes.
struct Factors {
  HWY_INLINE explicit Factors(RowFormat format)
      : luma(halvesOf(byteWeights(format, bt601::kY))),
        first(byteWeights(format, firstOfPair(format))),
        second(byteWeights(format, secondOfPair(format))) {}

  Weights luma, first, second;
};

HWY_INLINE void storeLuma(const Pixels (&p)[4], const Factors& factors, uint8_t* luma) {
  static_assert((bt601::kY.red | bt601::kY.green | bt601::kY.blue) % 2 == 0);
  static_assert(bt601::kY.offset % 65536 == 0);
  const auto part = [&](int i) HWY_ATTR { return hn::ShiftRight<15>(weigh(p[i], factors.luma)); };
  const auto sums = ops::join(ops::join(part(0), part(1)), ops::join(part(2), part(3)));
  storeInOrder(hn::Add(sums, hn::Set(Bytes(), bt601::kY.offset >> 16)), luma);
}

// Chroma pairs of the even pixels of two vectors, as signed shorts without their offset.
HWY_INLINE ShortVector pairsOf(const Pixels& p, const Pixels& q, const Factors& factors) {
  const Pixels evens = evenOf(p, q);
  const IntVector first = weigh(evens, factors.first), second = weigh(evens, factors.second);
  const Shorts d;
  const auto upper = hn::ShiftRight<16>(hn::BitCast(Words(), first));
  return hn::OddEven(hn::BitCast(d, second), hn::BitCast(d, upper));
}

HWY_INLINE void storeChroma(const Pixels (&p)[4], const Factors& factors, uint8_t* chroma) {
  static_assert(bt601::kU.offset == 0x80 << 16 && bt601::kV.offset == bt601::kU.offset);
  const auto pairs = ops::joinSigned(pairsOf(p[0], p[1], factors), pairsOf(p[2], p[3], factors));
  storeInOrder(hn::Xor(pairs, hn::Set(Bytes(), 0x80)), chroma);
}

template <RowFormat kFormat, bool kChroma>
HWY_INLINE void encodeBlock(const uint8_t* pixels, const Factors& factors, uint8_t* luma,
                            uint8_t* chroma) {
  const Pixels p[4] = {loadPixels<kFormat>(pixels, 0), loadPixels<kFormat>(pixels, 1),
                       loadPixels<kFormat>(pixels, 2), loadPixels<kFormat>(pixels, 3)};
  storeLuma(p, factors, luma);
  if constexpr (kChroma) {
    storeChroma(p, factors, chroma);
  }
}

}  // namespace

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_ENCODE_X86_INL_H_
