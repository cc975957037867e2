// Vector twins of the resize's row kernels, compiled once per vector target.
#include "kernels/vector_frame.h"
#include "pretty/resize_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pretty/resize_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& mixColumnsVector = mixColumnsPlain;
constexpr auto& mixRowsVector = mixRowsPlain;
constexpr auto& takeRowsVector = takeRowsPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<uint32_t>;
using Bytes = hn::Repartition<uint8_t, Words>;
using Ints = hn::RebindToSigned<Words>;
using Halves = hn::Repartition<uint16_t, Words>;
using Signed = hn::RebindToSigned<Halves>;
using WordVector = hn::Vec<Words>;
using HalfVector = hn::Vec<Halves>;

constexpr int kLanes = hn::MaxLanes(Words());  // words a step

// Mixes bytes that stand in 16 bits each: (a x (65535 - f) + b x f) >> 16.
HWY_INLINE HalfVector mixHalves(HalfVector a, HalfVector b, HalfVector fraction) {
#if ALG_IS_NEON()
  const uint16x8_t rest = vmvnq_u16(fraction.raw);
  const uint32x4_t low = vmlal_u16(vmull_u16(vget_low_u16(a.raw), vget_low_u16(rest)),
                                   vget_low_u16(b.raw), vget_low_u16(fraction.raw));
  const uint32x4_t high = vmlal_high_u16(vmull_high_u16(a.raw, rest), b.raw, fraction.raw);
  return HalfVector(vuzp2q_u16(vreinterpretq_u16_u32(low), vreinterpretq_u16_u32(high)));
#else
  // The sum is a x 65536 + (b - a) x f - a. With the product's low 16 bits unsigned, subtracting a
  // borrows from its high ones just when they are less than a.
  const Halves d;
  const Signed s;
  const auto difference = hn::BitCast(s, hn::Sub(b, a));
  const auto signedFraction = hn::BitCast(s, fraction);  // 65536 too small from 32768 on
  const auto high = hn::Add(hn::MulHigh(difference, signedFraction),
                            hn::And(difference, hn::ShiftRight<15>(signedFraction)));
  const auto low = hn::BitCast(d, hn::Mul(difference, signedFraction));
  const auto borrow = hn::Min(hn::SaturatedSub(a, low), hn::Set(d, 1));
  return hn::Sub(hn::Add(a, hn::BitCast(d, high)), borrow);
#endif
}

// Mixes the bytes of words: even ones and odd ones each in 16 bits where they stand.
HWY_INLINE WordVector mix(WordVector a, WordVector b, WordVector fractions) {
  const Halves d;
  const Words w;
  const auto halvesA = hn::BitCast(d, a);
  const auto halvesB = hn::BitCast(d, b);
  const auto fraction = hn::BitCast(d, fractions);
  const auto mask = hn::Set(d, 0xFF);
  const auto even = mixHalves(hn::And(halvesA, mask), hn::And(halvesB, mask), fraction);
  const auto odd = mixHalves(hn::ShiftRight<8>(halvesA), hn::ShiftRight<8>(halvesB), fraction);
  return hn::BitCast(w, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

// Each byte less by one of `by`, but not below 0. A mix of a byte v with itself, or with any other
// one at the fraction 0, is v x 65535 >> 16: one less.
HWY_INLINE WordVector less(WordVector words, uint32_t by) {
  return hn::BitCast(Words(), hn::SaturatedSub(hn::BitCast(Bytes(), words),
                                               hn::BitCast(Bytes(), hn::Set(Words(), by))));
}

constexpr uint32_t kOne = 0x01010101, kTwo = 0x02020202;
constexpr uint32_t kAlpha = 0xFF000000;  // to remove it

// The mix at the fraction 1/2, (a x 32767 + b x 32768) >> 16. That is half of a + b, rounded down,
// where a is 0, else half of a + b - 1: each time half of less(a, 1) + b.
HWY_INLINE WordVector mixHalfWay(WordVector a, WordVector b) {
  const Bytes d;
  const auto x = hn::BitCast(d, less(a, kOne)), y = hn::BitCast(d, b);
#if ALG_IS_NEON()
  return hn::BitCast(Words(), hn::Vec<Bytes>(vhaddq_u8(x.raw, y.raw)));
#else
  const auto up = hn::AverageRound(x, y);
  return hn::BitCast(Words(), hn::Sub(up, hn::And(hn::Xor(x, y), hn::Set(d, 1))));
#endif
}

// Words 0, 2, 4, ... from `row` on.
HWY_INLINE WordVector everySecond(const uint32_t* row) {
  const Words d;
  const auto low = hn::LoadU(d, row), high = hn::LoadU(d, row + kLanes);
#if ALG_IS_NEON()
  return WordVector(vuzp1q_u32(low.raw, high.raw));
#else
  return hn::ConcatEven(d, high, low);
#endif
}

/// out[i] = make(i), for kLanes of them at a time from `i` on; returns how many that makes. Several
/// are made before they are stored, so that in-order cores need not wait for each.
template <class Make>
HWY_INLINE int storeAll(int i, int count, uint32_t* out, Make make) {
  const Words d;
  for (; i + 4 * kLanes <= count; i += 4 * kLanes) {
    const WordVector first = make(i), second = make(i + kLanes);
    const WordVector third = make(i + 2 * kLanes), fourth = make(i + 3 * kLanes);
    hn::StoreU(first, d, out + i);
    hn::StoreU(second, d, out + i + kLanes);
    hn::StoreU(third, d, out + i + 2 * kLanes);
    hn::StoreU(fourth, d, out + i + 3 * kLanes);
  }
  for (; i + kLanes <= count; i += kLanes) {
    hn::StoreU(make(i), d, out + i);
  }
  return i;
}

// row[index[0]], row[index[1]], ...
HWY_INLINE WordVector gather(const uint32_t* row, const int32_t* index) {
#if ALG_IS_NEON()
  uint32x4_t words = vld1q_dup_u32(row + index[0]);
  words = vld1q_lane_u32(row + index[1], words, 1);
  words = vld1q_lane_u32(row + index[2], words, 2);
  return WordVector(vld1q_lane_u32(row + index[3], words, 3));
#else
  const auto word = [&](int i) HWY_ATTR { return static_cast<int>(row[index[i]]); };
  return WordVector{
      _mm256_setr_epi32(word(0), word(1), word(2), word(3), word(4), word(5), word(6), word(7))};
#endif
}

// The words of kLanes columns that all lie within kReach vectors from `first` on.
template <int kReach>
HWY_INLINE WordVector pick(const uint32_t* first, hn::Vec<Ints> place) {
#if ALG_IS_NEON()
  const auto bytes = vreinterpretq_u8_u32(
      vmlaq_n_u32(vdupq_n_u32(0x03020100), vreinterpretq_u32_s32(place.raw), 0x04040404));
  const auto load = [](const uint32_t* from) { return vreinterpretq_u8_u32(vld1q_u32(from)); };
  if constexpr (kReach == 1) {
    return WordVector(vreinterpretq_u32_u8(vqtbl1q_u8(load(first), bytes)));
  } else {
    return WordVector(vreinterpretq_u32_u8(vqtbl2q_u8({load(first), load(first + kLanes)}, bytes)));
  }
#else
  const Words d;
  const Ints ints;
  const auto lanes = hn::IndicesFromVec(d, hn::And(place, hn::Set(ints, kLanes - 1)));
  const auto low = hn::TableLookupLanes(hn::LoadU(d, first), lanes);
  if constexpr (kReach == 1) {
    return low;
  } else {
    const auto high = hn::TableLookupLanes(hn::LoadU(d, first + kLanes), lanes);
    const auto isHigh = hn::RebindMask(d, hn::Gt(place, hn::Set(ints, kLanes - 1)));
    return hn::IfThenElse(isHigh, high, low);
  }
#endif
}

/// out[i] = mixed(i, load) for each kLanes columns of the first `count`, load(row) being
/// row[index[i]], row[index[i + 1]], ...; returns how many columns that were. Close columns are
/// picked from whole vectors of the row as long as these, `spare` words longer, are inside the row.
template <int kReach, class Mixed>
HWY_INLINE int forEachLanes(const ResizeColumns& columns, int count, int spare, uint32_t* out,
                            Mixed mixed) {
  const Words d;
  const Ints ints;
  int i = 0;
  if constexpr (kReach > 0) {
    for (; i + kLanes <= count; i += kLanes) {
      const int32_t first = columns.index[i];
      if (first + kReach * kLanes + spare > columns.sourceWidth) {
        break;
      }
      const auto place = hn::Sub(hn::LoadU(ints, columns.index + i), hn::Set(ints, first));
      const auto load = [&](const uint32_t* row)
                            HWY_ATTR { return pick<kReach>(row + first, place); };
      hn::StoreU(mixed(i, load), d, out + i);
    }
  }
  for (; i + kLanes <= count; i += kLanes) {
    const auto load = [&](const uint32_t* row) HWY_ATTR { return gather(row, columns.index + i); };
    hn::StoreU(mixed(i, load), d, out + i);
  }
  return i;
}

template <class Mixed>
HWY_INLINE int forEachLanes(const ResizeColumns& columns, int count, int spare, uint32_t* out,
                            Mixed mixed) {
  return columns.reach == 1   ? forEachLanes<1>(columns, count, spare, out, mixed)
         : columns.reach == 2 ? forEachLanes<2>(columns, count, spare, out, mixed)
                              : forEachLanes<0>(columns, count, spare, out, mixed);
}

// Between columns half a source column apart: each word of the source, then halfway to the next.
HWY_INLINE int mixDoubled(const uint32_t* row, int count, uint32_t* out) {
  const Words d;
  int i = 0;
  for (; i + 2 * kLanes <= count; i += 2 * kLanes) {
    const auto here = hn::LoadU(d, row + i / 2);
    const auto between = mixHalfWay(here, hn::LoadU(d, row + i / 2 + 1));
    const auto low = hn::InterleaveLower(d, less(here, kOne), between);
    const auto high = hn::InterleaveUpper(d, less(here, kOne), between);
#if ALG_IS_NEON()
    hn::StoreU(low, d, out + i);
    hn::StoreU(high, d, out + i + kLanes);
#else  // interleaved within halves of vectors
    hn::StoreU(hn::ConcatLowerLower(d, high, low), d, out + i);
    hn::StoreU(hn::ConcatUpperUpper(d, high, low), d, out + i + kLanes);
#endif
  }
  return i;
}

void mixColumnsVector(const uint32_t* row, uint32_t end, const ResizeColumns& columns,
                      uint32_t* out) {
  int done;
  if (columns.step == 1 << 15) {
    done = mixDoubled(row, columns.paired, out);
  } else {
    const uint32_t* fractions = columns.fractions;
    done = forEachLanes(columns, columns.paired, 1, out, [=](int i, auto load) HWY_ATTR {
      return mix(load(row), load(row + 1), hn::LoadU(Words(), fractions + i));
    });
  }
  mixColumnsPlain(row, end, columns.from(done), out + done);
}

void takeRowsVector(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
                    const ResizeColumns& columns, uint32_t* out) {
  const auto fractions = hn::Set(Words(), fraction * 0x10001);
  const auto noAlpha = hn::Set(Words(), kNoAlpha);
  const auto takeTop = [=](int /*i*/, auto load)
                           HWY_ATTR { return less(load(top), kTwo | kAlpha); };
  const auto takeBoth = [=](int /*i*/, auto load) HWY_ATTR {
    return hn::And(mix(less(load(top), kOne), less(load(bottom), kOne), fractions), noAlpha);
  };
  int done;
  if (columns.step == 2 << 16 && fraction == 0) {  // every second word of one row
    done = storeAll(0, columns.paired, out,
                    [=](int i) HWY_ATTR { return less(everySecond(top + 2 * i), kTwo | kAlpha); });
  } else if (fraction == 0) {
    done = forEachLanes(columns, columns.paired, 0, out, takeTop);
  } else {
    done = forEachLanes(columns, columns.paired, 0, out, takeBoth);
  }
  takeRowsPlain(top, bottom, fraction, columns.from(done), out + done);
}

void mixRowsVector(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
                   uint32_t* out) {
  const Words d;
  const auto noAlpha = hn::Set(d, kNoAlpha);
  int done;
  if (fraction == 0) {
    done = storeAll(0, count, out,
                    [=](int i) HWY_ATTR { return less(hn::LoadU(d, top + i), kOne | kAlpha); });
  } else if (fraction == kHalfWay) {
    done = storeAll(0, count, out, [=](int i) HWY_ATTR {
      return hn::And(mixHalfWay(hn::LoadU(d, top + i), hn::LoadU(d, bottom + i)), noAlpha);
    });
  } else {
    const auto fractions = hn::Set(d, fraction * 0x10001);
    done = storeAll(0, count, out, [=](int i) HWY_ATTR {
      return hn::And(mix(hn::LoadU(d, top + i), hn::LoadU(d, bottom + i), fractions), noAlpha);
    });
  }
  mixRowsPlain(top + done, bottom + done, fraction, count - done, out + done);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void mixColumns(const uint32_t* row, uint32_t end, const ResizeColumns& columns, uint32_t* out) {
  ALG_DISPATCH(mixColumnsVector)(row, end, columns, out);
}

void mixRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction, int count,
             uint32_t* out) {
  ALG_DISPATCH(mixRowsVector)(top, bottom, fraction, count, out);
}

void takeRows(const uint32_t* top, const uint32_t* bottom, uint32_t fraction,
              const ResizeColumns& columns, uint32_t* out) {
  ALG_DISPATCH(takeRowsVector)(top, bottom, fraction, columns, out);
}

}  // namespace alg
#endif
