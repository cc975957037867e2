// Vector twin of the soft-light blend, compiled once per vector target. A value c and its overlay
// byte o take one product of 16-bit lanes, of which the upper half is the change:
//
//   share  2o - 255                      -255..255
//   gain   c x (256 - c)                 where o < 128       share x gain >> 16
//          (isqrt(255c) - c) << 8        where o >= 128      share x gain >> 16 = share x high >> 8
//
// isqrt(255c) - c, the definition's float formula in integers, comes without tables of 256: from 32
// on it is a straight line in each sixteen values, rounded down; below, where it is steep, a table.
//
//   (slope[c >> 4] x (c & 63) + 77 x start) >> 8     start = starts[c >> 4], or low[c] for c < 32
//
// AVX-512 has tables of 256, which hold the shifts of pink, too.
#define ALG_ALSO_AVX512
#include "base/image_size.h"
#include "kernels/vector_frame.h"
#include "pretty/soft_light.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pretty/soft_light_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/row_blocks-inl.h"

#ifndef ALG_PRETTY_SOFT_LIGHT_LINES
#define ALG_PRETTY_SOFT_LIGHT_LINES
namespace alg {
namespace {

constexpr int kStartScale = 77;  // in 1/256; with it each line has a slope and a start of 8 bits

struct Lines {
  alignas(16) int8_t slopes[16] = {};
  alignas(16) uint8_t starts[16] = {};
  alignas(16) uint8_t low[32] = {};

  static constexpr int at(int slope, int start, int c) {
    return (slope * (c & 63) + kStartScale * start) >> 8;
  }
  constexpr int at(int c) const {
    return c < 32 ? at(0, low[c], c) : at(slopes[c >> 4], starts[c >> 4], c);
  }
};

struct HighGains {
  int of[256] = {};
};

constexpr HighGains kHigh = [] {
  HighGains high;
  for (int c = 0; c < 256; ++c) {
    int root = c;
    while ((root + 1) * (root + 1) <= 255 * c) {
      ++root;
    }
    high.of[c] = root - c;
  }
  return high;
}();

/// Whether a line with this slope and start meets all sixteen values from `first` on.
constexpr bool meets(int slope, int start, int first) {
  for (int c = first; c < first + 16; ++c) {
    if (Lines::at(slope, start, c) != kHigh.of[c]) {
      return false;
    }
  }
  return true;
}

constexpr Lines kLines = [] {
  Lines lines;
  for (int c = 0; c < 32; ++c) {
    lines.low[c] = static_cast<uint8_t>((256 * kHigh.of[c] + kStartScale - 1) / kStartScale);
  }
  for (int segment = 2; segment < 16; ++segment) {
    const int first = 16 * segment;
    const int chord = 256 * (kHigh.of[first + 15] - kHigh.of[first]) / 15;
    for (int slope = chord - 18; slope <= chord + 18; ++slope) {  // rounding hides less than 256/15
      const int rest = 256 * kHigh.of[first] - slope * (first & 63);
      for (int start = rest / kStartScale; start <= (rest + 255) / kStartScale; ++start) {
        if (meets(slope, start, first)) {
          lines.slopes[segment] = static_cast<int8_t>(slope);
          lines.starts[segment] = static_cast<uint8_t>(start);
        }
      }
    }
  }
  return lines;
}();

constexpr bool linesMeetAll() {
  for (int c = 0; c < 256; ++c) {
    if (kLines.at(c) != kHigh.of[c]) {
      return false;
    }
  }
  return true;
}
static_assert(linesMeetAll());

struct WholeTables {
  alignas(64) uint8_t high[256] = {};
  alignas(64) uint8_t pinkShifts[256] = {};
};

[[maybe_unused]] constexpr WholeTables kWhole = [] {
  WholeTables tables;
  for (int v = 0; v < 256; ++v) {
    tables.high[v] = static_cast<uint8_t>(kHigh.of[v]);
    tables.pinkShifts[v] = static_cast<uint8_t>(pinkShift(v));
  }
  return tables;
}();

}  // namespace
}  // namespace alg
#endif

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& softLightBytesVector = softLightBytesPlain;
constexpr auto& pinkLightPixelsVector = pinkLightPixelsPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using SignedBytes = hn::ScalableTag<int8_t>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kLanes = hn::MaxLanes(Bytes());
constexpr std::size_t kStep = 3 * kLanes;  // bytes; whole pixels

#if ALG_IS_AVX512()

using Shorts = hn::ScalableTag<int16_t>;
using ShortVector = hn::Vec<Shorts>;

// Of the even or the odd bytes. Where `high` isn't 0, `down` is.
HWY_INLINE ShortVector changeOf(ShortVector down, ShortVector high, ShortVector twiceOverlay) {
  const Shorts d;
  const ShortVector low = hn::Mul(down, hn::Sub(hn::Set(d, 256), down));
  return hn::MulHigh(hn::Sub(twiceOverlay, hn::Set(d, 255)), hn::Or(low, high));
}

HWY_INLINE ByteVector softLightOf(ByteVector c, ByteVector overlay) {
  const Bytes d;
  const Shorts s;
  const hn::Repartition<uint16_t, Bytes> u;
  const __mmask64 lighter = _mm512_movepi8_mask(overlay.raw);
  const auto high = hn::BitCast(s, ops::ByteTable(kWhole.high).lookUp(lighter, c));
  const ByteVector down{_mm512_maskz_mov_epi8(~lighter, c.raw)};
  const ShortVector even = changeOf(hn::And(hn::BitCast(s, down), hn::Set(s, 0xFF)),
                                    hn::ShiftLeft<8>(high), ops::weighPairs<2, 0>(overlay));
  const ShortVector odd = changeOf(hn::BitCast(s, hn::ShiftRight<8>(hn::BitCast(u, down))),
                                   hn::And(high, hn::Set(s, static_cast<int16_t>(-256))),
                                   ops::weighPairs<0, 2>(overlay));
  const ByteVector change =
      hn::OddEven(hn::BitCast(d, hn::ShiftLeft<8>(odd)), hn::BitCast(d, even));
  return hn::Add(c, change);
}

HWY_INLINE ByteVector pinkShiftOf(ByteVector v) { return ops::ByteTable(kWhole.pinkShifts)(v); }

#else  // NEON and AVX2

// Where all bits of a byte of `lighter` are set, the gain of `up` counts, elsewhere that of `down`;
// the other one is 0 there. `up` is a value's distance from its line's start.
struct Operands {
  ByteVector down, up, slope, start;
};

#if ALG_IS_NEON()

HWY_INLINE int16x8_t gainOf(uint8x8_t down, uint8x8_t negative, uint8x8_t up, uint8x8_t slope,
                            uint8x8_t start) {
  const int16x8_t line = vmlal_s8(vreinterpretq_s16_u16(vmull_u8(start, vdup_n_u8(kStartScale))),
                                  vreinterpret_s8_u8(slope), vreinterpret_s8_u8(up));
  const uint16x8_t high = vandq_u16(vreinterpretq_u16_s16(line), vdupq_n_u16(0xFF00));
  return vreinterpretq_s16_u16(vmlal_u8(high, down, negative));  // c x (256 - c), 0 for 0
}

// sqdmulh has twice the product's upper half; the narrowing shift takes the doubling back.
HWY_INLINE ByteVector changeOf(const Operands& x, ByteVector overlay) {
  const uint8x16_t negative = vreinterpretq_u8_s8(vnegq_s8(vreinterpretq_s8_u8(x.down.raw)));
  const uint8x16_t rest = vmvnq_u8(overlay.raw);  // o - (255 - o) = 2o - 255
  const int16x8_t gain0 =
      gainOf(vget_low_u8(x.down.raw), vget_low_u8(negative), vget_low_u8(x.up.raw),
             vget_low_u8(x.slope.raw), vget_low_u8(x.start.raw));
  const int16x8_t gain1 =
      gainOf(vget_high_u8(x.down.raw), vget_high_u8(negative), vget_high_u8(x.up.raw),
             vget_high_u8(x.slope.raw), vget_high_u8(x.start.raw));
  const int16x8_t share0 =
      vreinterpretq_s16_u16(vsubl_u8(vget_low_u8(overlay.raw), vget_low_u8(rest)));
  const int16x8_t share1 =
      vreinterpretq_s16_u16(vsubl_u8(vget_high_u8(overlay.raw), vget_high_u8(rest)));
  const int8x8_t change0 = vshrn_n_s16(vqdmulhq_s16(share0, gain0), 1);
  const int8x16_t change = vshrn_high_n_s16(change0, vqdmulhq_s16(share1, gain1), 1);
  return ByteVector(vreinterpretq_u8_s8(change));
}

HWY_INLINE ByteVector startOf(ByteVector c, ByteVector segment) {
  const uint8x16_t start = vqtbl1q_u8(vld1q_u8(kLines.starts), segment.raw);
  const uint8x16x2_t low = {{vld1q_u8(kLines.low), vld1q_u8(kLines.low + 16)}};
  return ByteVector(vqtbx2q_u8(start, low, c.raw));
}

HWY_INLINE ByteVector pinkShiftOf(ByteVector v) {
  const uint8x16_t rest = vmvnq_u8(v.raw);
  const uint8x8_t middle = vdup_n_u8(128);
  const auto shift = [&](uint8x8_t value, uint8x8_t to255) HWY_ATTR {
    return vqdmulhq_s16(vreinterpretq_s16_u16(vsubl_u8(middle, value)),
                        vreinterpretq_s16_u16(vmull_u8(value, to255)));
  };
  const int8x8_t low = vshrn_n_s16(shift(vget_low_u8(v.raw), vget_low_u8(rest)), 1);
  return ByteVector(vreinterpretq_u8_s8(
      vshrn_high_n_s16(low, shift(vget_high_u8(v.raw), vget_high_u8(rest)), 1)));
}

#else  // AVX2

using Shorts = hn::ScalableTag<int16_t>;
using ShortVector = hn::Vec<Shorts>;

// a[0] x b[0] + a[1] x b[1] in each 16-bit lane; a's bytes are unsigned, b's signed.
HWY_INLINE ShortVector addPairs(ByteVector a, ByteVector b) {
  return ShortVector{_mm256_maddubs_epi16(a.raw, b.raw)};
}

// `half` interleaves two vectors' lower or upper halves.
template <class Half>
HWY_INLINE ShortVector changeOfHalf(const Operands& x, ByteVector overlay, Half half) {
  const Bytes d;
  const Shorts shorts;
  const ShortVector line =
      addPairs(half(x.up, x.start), half(x.slope, hn::Set(d, static_cast<uint8_t>(kStartScale))));
  const ShortVector high = hn::And(line, hn::Set(shorts, static_cast<int16_t>(-256)));
  const ShortVector down = hn::BitCast(shorts, half(x.down, hn::Zero(d)));
  const ShortVector low = hn::Mul(down, hn::Sub(hn::Set(shorts, 256), down));
  const ShortVector share =
      addPairs(half(overlay, hn::Set(d, 0xFF)),  // 2 x o - 1 x 255
               hn::BitCast(d, hn::Set(shorts, static_cast<int16_t>(0xFF02 - 0x10000))));
  return hn::MulHigh(share, hn::Or(low, high));
}

HWY_INLINE ByteVector packed(ShortVector lower, ShortVector upper) {
  return ByteVector{_mm256_packs_epi16(lower.raw, upper.raw)};
}

// Calls with both ways to interleave, which packed() undoes.
template <class Change>
HWY_INLINE ByteVector onHalves(Change change) {
  const Bytes d;
  const ShortVector lower =
      change([&](ByteVector a, ByteVector b) HWY_ATTR { return hn::InterleaveLower(d, a, b); });
  const ShortVector upper =
      change([&](ByteVector a, ByteVector b) HWY_ATTR { return hn::InterleaveUpper(d, a, b); });
  return packed(lower, upper);
}

HWY_INLINE ByteVector changeOf(const Operands& x, ByteVector overlay) {
  return onHalves([&](auto half) HWY_ATTR { return changeOfHalf(x, overlay, half); });
}

// An index of 16 or more saturates to one with bit 7, for which the lookup gives 0.
HWY_INLINE ByteVector startOf(ByteVector c, ByteVector segment) {
  const Bytes d;
  const auto lookUp = [&](const uint8_t* table, ByteVector index) HWY_ATTR {
    return hn::TableLookupBytesOr0(hn::LoadDup128(d, table),
                                   hn::SaturatedAdd(index, hn::Set(d, 0x70)));
  };
  const ByteVector low =
      hn::Or(lookUp(kLines.low, c), lookUp(kLines.low + 16, hn::Xor(c, hn::Set(d, 0x10))));
  return hn::Or(low, hn::TableLookupBytes(hn::LoadDup128(d, kLines.starts), segment));
}

HWY_INLINE ByteVector pinkShiftOf(ByteVector v) {
  return onHalves([&](auto half) HWY_ATTR {
    const Shorts shorts;
    const ShortVector value = hn::BitCast(shorts, half(v, hn::Zero(Bytes())));
    return hn::MulHigh(hn::Sub(value, hn::Set(shorts, 128)),
                       hn::Mul(value, hn::Sub(value, hn::Set(shorts, 255))));
  });
}

#endif

HWY_INLINE ByteVector softLightOf(ByteVector c, ByteVector overlay) {
  const Bytes d;
  const SignedBytes s;
  const ByteVector lighter = hn::BitCast(d, hn::BroadcastSignBit(hn::BitCast(s, overlay)));
  const ByteVector up = hn::And(c, lighter);
  const ByteVector segment = hn::ShiftRight<4>(up);
  const ByteVector slopes = hn::LoadDup128(d, reinterpret_cast<const uint8_t*>(kLines.slopes));
  const Operands x = {hn::AndNot(lighter, c), hn::And(up, hn::Set(d, 63)),
                      hn::TableLookupBytes(slopes, segment), startOf(up, segment)};
  return hn::Add(c, changeOf(x, overlay));
}

#endif

// `signs` has 0 for bytes 0 of the pixels, -1 for the others.
HWY_INLINE ByteVector pinkOf(ByteVector v, ByteVector signs) {
  const ByteVector shift = pinkShiftOf(v);
  return hn::Add(v, hn::Sub(hn::Xor(shift, signs), signs));
}

void softLightBytesVector(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                          std::size_t bytes) {
  const Bytes d;
  const auto blend = [&](std::size_t /*x*/, const uint8_t* from, const uint8_t* with, uint8_t* to)
                         HWY_ATTR {
                           for (std::size_t i = 0; i < kStep; i += kLanes) {
                             const ByteVector c = hn::LoadU(d, from + i);
                             hn::StoreU(softLightOf(c, hn::LoadU(d, with + i)), d, to + i);
                           }
                         };
  forEachBlock<kStep>(bytes, blend, Reads<1>{src}, Reads<1>{overlay}, Writes<1>{dst});
}

void pinkLightPixelsVector(const uint8_t* src, const uint8_t* overlay, uint8_t* dst,
                           std::size_t pixels) {
  const Bytes d;
  HWY_ALIGN uint8_t signs[kStep];
  for (std::size_t i = 0; i < kStep; ++i) {
    signs[i] = i % kPackedBytes == 0 ? 0 : 0xFF;
  }
  const auto blend = [&](std::size_t /*x*/, const uint8_t* from, const uint8_t* with,
                         uint8_t* to) HWY_ATTR {
    for (std::size_t i = 0; i < kStep; i += kLanes) {
      const ByteVector c = pinkOf(hn::LoadU(d, from + i), hn::Load(d, signs + i));
      hn::StoreU(softLightOf(c, hn::LoadU(d, with + i)), d, to + i);
    }
  };
  forEachBlock<kStep>(kPackedBytes * pixels, blend, Reads<1>{src}, Reads<1>{overlay},
                      Writes<1>{dst});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void softLightBytes(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t bytes) {
  ALG_DISPATCH(softLightBytesVector)(src, overlay, dst, bytes);
}

void pinkLightPixels(const uint8_t* src, const uint8_t* overlay, uint8_t* dst, std::size_t pixels) {
  ALG_DISPATCH(pinkLightPixelsVector)(src, overlay, dst, pixels);
}

}  // namespace alg
#endif
