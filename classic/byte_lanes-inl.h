// Steps between vectors of bytes and of wider lanes, and the gradient of bytes; included by the
// drawing effects' kernel file, once per vector target.
#if defined(ALG_BYTE_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_BYTE_LANES_INL_H_
#undef ALG_BYTE_LANES_INL_H_
#else
#define ALG_BYTE_LANES_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "classic/grey_rows.h"
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_HAS_VECTORS()

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using SignedBytes = hn::RebindToSigned<Bytes>;
using Shorts = hn::Repartition<int16_t, Bytes>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Floats = hn::Repartition<float, Bytes>;
using ByteVector = hn::Vec<Bytes>;
using ShortVector = hn::Vec<Shorts>;
using IntVector = hn::Vec<Ints>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // windows a step
static_assert(kBlock + 2 <= kRowPadding);

// One value for each byte of a vector. On x86 every widening and narrowing step stays within the
// blocks of 16 bytes, so that the order in between does not matter.
struct Shorts2 {
  ShortVector lower, upper;
};

struct Ints4 {
  IntVector part[4];
};

// Steps between bytes, 16-bit and 32-bit lanes -------------------------------------------------

#if ALG_IS_NEON()

HWY_INLINE Shorts2 difference(ByteVector a, ByteVector b) {
  const uint16x8_t lower = vsubl_u8(vget_low_u8(a.raw), vget_low_u8(b.raw));
  const uint16x8_t upper = vsubl_high_u8(a.raw, b.raw);
  return {ShortVector(vreinterpretq_s16_u16(lower)), ShortVector(vreinterpretq_s16_u16(upper))};
}

// sum + kWeight x (plus - minus)
template <int kWeight>
HWY_INLINE Shorts2 addDifference(Shorts2 sum, ByteVector plus, ByteVector minus) {
  const uint8x16_t weight = vdupq_n_u8(kWeight);
  uint16x8_t lower = vreinterpretq_u16_s16(sum.lower.raw);
  uint16x8_t upper = vreinterpretq_u16_s16(sum.upper.raw);
  lower = vmlal_u8(lower, vget_low_u8(plus.raw), vget_low_u8(weight));
  lower = vmlsl_u8(lower, vget_low_u8(minus.raw), vget_low_u8(weight));
  upper = vmlsl_high_u8(vmlal_high_u8(upper, plus.raw, weight), minus.raw, weight);
  return {ShortVector(vreinterpretq_s16_u16(lower)), ShortVector(vreinterpretq_s16_u16(upper))};
}

HWY_INLINE Ints4 sumsOfSquares(Shorts2 a, Shorts2 b) {
  const auto lower = [](ShortVector x, ShortVector y) HWY_ATTR {
    return IntVector(vmlal_s16(vmull_s16(vget_low_s16(x.raw), vget_low_s16(x.raw)),
                               vget_low_s16(y.raw), vget_low_s16(y.raw)));
  };
  const auto upper = [](ShortVector x, ShortVector y) HWY_ATTR {
    return IntVector(vmlal_high_s16(vmull_high_s16(x.raw, x.raw), y.raw, y.raw));
  };
  return {{lower(a.lower, b.lower), upper(a.lower, b.lower), lower(a.upper, b.upper),
           upper(a.upper, b.upper)}};
}

// The low bytes.
HWY_INLINE ByteVector narrow(const Ints4& v) {
  const auto bytes = [](IntVector x) HWY_ATTR { return vreinterpretq_u8_s32(x.raw); };
  const auto even = [](uint8x16_t x, uint8x16_t y) HWY_ATTR {
    return vreinterpretq_u8_u16(vuzp1q_u16(vreinterpretq_u16_u8(x), vreinterpretq_u16_u8(y)));
  };
  return ByteVector(vuzp1q_u8(even(bytes(v.part[0]), bytes(v.part[1])),
                              even(bytes(v.part[2]), bytes(v.part[3]))));
}

// (a x b) >> 7, where b is below 128
HWY_INLINE ByteVector scaled(ByteVector a, ByteVector b) {
  const uint16x8_t lower = vmull_u8(vget_low_u8(a.raw), vget_low_u8(b.raw));
  return ByteVector(vshrn_high_n_u16(vshrn_n_u16(lower, 7), vmull_high_u8(a.raw, b.raw), 7));
}

#else

// sum + kWeight x (plus - minus)
template <int kWeight>
HWY_INLINE Shorts2 addDifference(Shorts2 sum, ByteVector plus, ByteVector minus) {
  const Bytes d;
  const auto lower = ops::weighPairs<kWeight, -kWeight>(hn::InterleaveLower(d, plus, minus));
  const auto upper = ops::weighPairs<kWeight, -kWeight>(hn::InterleaveUpper(d, plus, minus));
  return {hn::Add(sum.lower, lower), hn::Add(sum.upper, upper)};
}

HWY_INLINE Ints4 sumsOfSquares(Shorts2 a, Shorts2 b) {
  const Shorts d;
  return {{ops::sumSquares(hn::InterleaveLower(d, a.lower, b.lower)),
           ops::sumSquares(hn::InterleaveUpper(d, a.lower, b.lower)),
           ops::sumSquares(hn::InterleaveLower(d, a.upper, b.upper)),
           ops::sumSquares(hn::InterleaveUpper(d, a.upper, b.upper))}};
}

// Limited to 0..255.
HWY_INLINE ByteVector narrow(const Ints4& v) {
  return ops::join(ops::join(v.part[0], v.part[1]), ops::join(v.part[2], v.part[3]));
}

// (a x b) >> 7, where b is below 128
HWY_INLINE ByteVector scaled(ByteVector a, ByteVector b) {
  const Bytes d;
  const Shorts shorts;
  const ByteVector evenBytes = hn::BitCast(d, hn::Set(shorts, int16_t{0xFF}));
  const ShortVector even = ops::weighPairs(a, hn::And(b, evenBytes));
  const ShortVector odd = ops::weighPairs(a, hn::AndNot(evenBytes, b));
  return hn::Or(hn::BitCast(d, hn::ShiftRight<7>(even)),
                hn::AndNot(evenBytes, hn::BitCast(d, hn::ShiftLeft<1>(odd))));
}

#endif

HWY_INLINE Ints4 load4(const int32_t* from) {
  const Ints d;
  constexpr std::size_t kLanes = kBlock / 4;
  return {{hn::Load(d, from), hn::Load(d, from + kLanes), hn::Load(d, from + 2 * kLanes),
           hn::Load(d, from + 3 * kLanes)}};
}

struct Gradient {
  Shorts2 x, y;
};

// The gradient of bytes, times kScale; the middle row and column weigh kMiddle.
#if ALG_IS_NEON()
// Across the diagonals there are two differences, which both components are made of.
template <int kScale, int kMiddle>
HWY_INLINE Gradient gradient(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom) {
  const Bytes d;
  const Shorts2 falling = difference(hn::LoadU(d, top), hn::LoadU(d, bottom + 2));
  const Shorts2 rising = difference(hn::LoadU(d, top + 2), hn::LoadU(d, bottom));
  const auto join = [](Shorts2 diagonals, ByteVector plus, ByteVector minus) HWY_ATTR {
    const Shorts2 sum = addDifference<kMiddle>(diagonals, plus, minus);
    return Shorts2{ShortVector(vmulq_n_s16(sum.lower.raw, kScale)),  // shifts
                   ShortVector(vmulq_n_s16(sum.upper.raw, kScale))};
  };
  return {join({hn::Sub(falling.lower, rising.lower), hn::Sub(falling.upper, rising.upper)},
               hn::LoadU(d, middle), hn::LoadU(d, middle + 2)),
          join({hn::Add(falling.lower, rising.lower), hn::Add(falling.upper, rising.upper)},
               hn::LoadU(d, top + 1), hn::LoadU(d, bottom + 1))};
}
#else
template <int kScale, int kMiddle>
HWY_INLINE Gradient gradient(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom) {
  const Bytes d;
  const ByteVector topLeft = hn::LoadU(d, top), topRight = hn::LoadU(d, top + 2);
  const ByteVector bottomLeft = hn::LoadU(d, bottom), bottomRight = hn::LoadU(d, bottom + 2);
  const ShortVector zero = hn::Zero(Shorts());
  Gradient g{{zero, zero}, {zero, zero}};
  g.x = addDifference<kScale>(g.x, topLeft, topRight);
  g.x = addDifference<kScale * kMiddle>(g.x, hn::LoadU(d, middle), hn::LoadU(d, middle + 2));
  g.x = addDifference<kScale>(g.x, bottomLeft, bottomRight);
  g.y = addDifference<kScale>(g.y, topLeft, bottomLeft);
  g.y = addDifference<kScale * kMiddle>(g.y, hn::LoadU(d, top + 1), hn::LoadU(d, bottom + 1));
  g.y = addDifference<kScale>(g.y, topRight, bottomRight);
  return g;
}

#endif

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_BYTE_LANES_INL_H_
