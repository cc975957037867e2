// The twin of cartoonRow; included by the drawing effects' kernel file, once per vector target.
#if defined(ALG_CARTOON_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_CARTOON_ROWS_INL_H_
#undef ALG_CARTOON_ROWS_INL_H_
#else
#define ALG_CARTOON_ROWS_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/image_size.h"
#include "classic/byte_lanes-inl.h"
#include "classic/drawing_rows.h"
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"
#include "kernels/row_blocks-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if ALG_HAS_VECTORS()

using planes::storeOrdered;

// The brightest neighbours of a block of windows, by channel and of all.
struct Brightest {
  ByteVector of[kPackedBytes], all;
};

HWY_INLINE Brightest brightest(const PlaneWindow& rows, std::size_t x) {
  const Bytes d;
  ByteVector most[kPackedBytes];
  for (int c = 0; c < kPackedBytes; ++c) {
    const PlaneWindow w = rows.plane(c);
    const ByteVector left = hn::LoadU(d, w.top + x), right = hn::LoadU(d, w.top + x + 2);
    ByteVector upper = hn::Max(left, right);
    if (c == 2) {  // channel 1 of the upper right pixel unless the left one is brighter
      upper = hn::IfThenElse(hn::Eq(upper, right), hn::LoadU(d, w.top - w.pitch + x + 2), left);
    }
    const ByteVector lower = hn::Max(hn::LoadU(d, w.bottom + x), hn::LoadU(d, w.bottom + x + 2));
    most[c] = hn::Max(upper, lower);
  }
  return {{most[0], most[1], most[2]}, hn::Max(hn::Max(most[0], most[1]), most[2])};
}

#if ALG_IS_NEON()

// Looks up eight factors by their offsets in bytes. Half of the offsets are moved out of the vector
// one by one, half four at a time, which balances the pipelines.
HWY_INLINE void takeFactors(const uint32_t* factors, uint16x8_t offsets, uint32_t* looked) {
  const uintptr_t base = reinterpret_cast<uintptr_t>(factors);
  const auto at = [base](uint64_t offset)
                      HWY_ATTR { return *reinterpret_cast<const uint32_t*>(base + offset); };
  const uint64_t four = vgetq_lane_u64(vreinterpretq_u64_u16(offsets), 0);
  const uint32_t found[8] = {at(four & 0xFFFF),
                             at(four >> 16 & 0xFFFF),
                             at(four >> 32 & 0xFFFF),
                             at(four >> 48),
                             at(vgetq_lane_u16(offsets, 4)),
                             at(vgetq_lane_u16(offsets, 5)),
                             at(vgetq_lane_u16(offsets, 6)),
                             at(vgetq_lane_u16(offsets, 7))};
  std::copy_n(found, 8, looked);
}

HWY_INLINE uint8x8_t scaledBy(const uint32_t* factors, uint16x8_t v) {
  const uint16x8x2_t halves = vld2q_u16(reinterpret_cast<const uint16_t*>(factors));
  const int16x8_t fine =
      vqdmulhq_s16(vreinterpretq_s16_u16(v), vreinterpretq_s16_u16(halves.val[0]));
  return vshrn_n_u16(vmlaq_u16(vreinterpretq_u16_s16(fine), v, halves.val[1]), 8);
}

HWY_INLINE ByteVector scaledBy(const uint32_t* factors, ByteVector v) {
  return ByteVector(vcombine_u8(scaledBy(factors, vmovl_u8(vget_low_u8(v.raw))),
                                scaledBy(factors + 8, vmovl_high_u8(v.raw))));
}

HWY_INLINE void cartoonBlock(const PlaneWindow& rows, std::size_t x, uint8_t* out,
                             const uint32_t* factors) {
  HWY_ALIGN uint32_t looked[kPackedBytes][kBlock];
  const Brightest most = brightest(rows, x);
  const uint8x16_t one = vdupq_n_u8(sizeof(uint32_t)), three = vdupq_n_u8(3 * sizeof(uint32_t));
  const auto take = [&](int c) HWY_ATTR {
    const uint8x16_t all = most.all.raw, own = most.of[c].raw;
    const uint16x8_t lower = vmlal_u8(vmull_u8(vget_low_u8(all), vget_low_u8(one)),
                                      vget_low_u8(own), vget_low_u8(three));
    takeFactors(factors, lower, looked[c]);
    takeFactors(factors, vmlal_high_u8(vmull_high_u8(all, one), own, three), looked[c] + 8);
  };
  take(0);
  take(1);
  take(2);
  const auto scaled = [&](int c) HWY_ATTR {
    return scaledBy(looked[c], hn::LoadU(Bytes(), rows.plane(c).middle + x + 1));
  };
  storeOrdered(scaled(2), scaled(1), scaled(0), out);
}

void cartoonRowVector(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                      const CartoonFactors& factors) {
  const PlaneWindow planes = rows;  // which no store can change
  const std::size_t whole = count - count % kBlock;
  for (std::size_t x = 0; x < whole; x += kBlock) {
    cartoonBlock(planes, x, out + kPackedBytes * x, factors.entries);
  }
  if (whole < count) {
    uint8_t tail[kPackedBytes * kBlock];
    cartoonBlock(planes, whole, tail, factors.entries);
    std::memcpy(out + kPackedBytes * whole, tail, kPackedBytes * (count - whole));
  }
}

#else

// The division itself, in float. With n as where the factors are found, the correctly rounded 1 / n
// is below the real one just where 4 / n is, and number x rounded - 1 has that sign exactly.
// (1020 x v + 0.5) / n has the integer part of 1020 x v / n; (1020 x v - 0.5) / n has it too unless
// n divides 1020 x v, where it is one less, as it has to be if the factor is rounded down. Either
// is further from an integer than the rounding of floats, which has been tried over all n and v.
HWY_INLINE IntVector quotient(IntVector n, IntVector v) {
  const Floats d;
  const auto number = hn::ConvertTo(d, n), one = hn::Set(d, 1.0f);
  const auto factor = hn::Div(one, number);
  const auto excess = hn::MulSub(number, factor, one);
  const auto half = hn::CopySignToAbs(hn::Set(d, 0.5f), excess);
  const auto dividend = hn::MulAdd(hn::ConvertTo(d, v), hn::Set(d, 1020.0f), half);
  return ops::truncated(hn::Mul(dividend, factor));  // never out of range
}

// Byte kByte of each lane.
template <int kByte>
HWY_INLINE IntVector pick(ByteVector v) {
  const Ints d;
  const IntVector lanes = hn::And(hn::ShiftLeft<2>(hn::Iota(d, 0)), hn::Set(d, 12));
  const IntVector zeros = hn::Set(d, kByte - 256);  // but for the low byte
  return hn::BitCast(d, hn::TableLookupBytesOr0(v, hn::BitCast(Bytes(), hn::Or(lanes, zeros))));
}

// The low halves of lanes a, and of lanes b above them.
HWY_INLINE ShortVector joined(IntVector a, IntVector b) {
  const Shorts d;
  return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(b)), hn::BitCast(d, a));
}

// Bytes stay in their lanes: n is that of the even bytes and that of the odd ones.
HWY_INLINE ByteVector quotients(const Shorts2& n, ByteVector v) {
  const Ints d;
  const Shorts shorts;
  const auto low = hn::Set(d, 0xFFFF);
  const IntVector even = hn::BitCast(d, n.lower), odd = hn::BitCast(d, n.upper);
  const IntVector q0 = quotient(hn::And(even, low), pick<0>(v));
  const IntVector q2 = quotient(hn::ShiftRight<16>(even), pick<2>(v));
  const ShortVector evenBytes = hn::And(joined(q0, q2), hn::Set(shorts, int16_t{0xFF}));
  const IntVector q1 = quotient(hn::And(odd, low), pick<1>(v));
  const IntVector q3 = quotient(hn::ShiftRight<16>(odd), pick<3>(v));
  return hn::BitCast(Bytes(), hn::Or(evenBytes, hn::ShiftLeft<8>(joined(q1, q3))));
}

void cartoonRowVector(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                      const CartoonFactors& /*factors*/) {
  const auto divide = [&](std::size_t x, uint8_t* to) HWY_ATTR {
    const Bytes d;
    const Shorts shorts;
    const auto one = hn::Set(shorts, int16_t{1});
    const Brightest most = brightest(rows, x);
    const ShortVector all = hn::BitCast(shorts, most.all);
    const ShortVector evenLimit = hn::Add(hn::And(all, hn::Set(shorts, int16_t{0xFF})), one);
    const ShortVector oddLimit = hn::Add(
        hn::BitCast(shorts, hn::ShiftRight<8>(hn::BitCast(hn::RebindToUnsigned<Shorts>(), all))),
        one);
    ByteVector result[kPackedBytes];
    for (int c = 0; c < kPackedBytes; ++c) {
      const Shorts2 n = {hn::Add(evenLimit, ops::weighPairs<3, 0>(most.of[c])),
                         hn::Add(oddLimit, ops::weighPairs<0, 3>(most.of[c]))};
      result[c] = quotients(n, hn::LoadU(d, rows.plane(c).middle + x + 1));
    }
    storeOrdered(result[2], result[1], result[0], to);
  };
  forEachBlock<kBlock>(count, divide, Writes<kPackedBytes>{out});
}

#endif  // NEON or x86

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_CARTOON_ROWS_INL_H_
