// Vector twins of the drawing effects' row kernels, compiled once per vector target. Each works on
// a whole vector of bytes at a time, which become two vectors of 16-bit and four of 32-bit lanes.
#define ALG_ALSO_AVX512
#include <algorithm>
#include <cstring>

#include "base/image_size.h"
#include "classic/drawing_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/drawing_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
// After Highway, which defines the target.
#include "classic/byte_lanes-inl.h"
#include "classic/cartoon_rows-inl.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& reliefRowVector = reliefRowPlain;
constexpr auto& lineRowVector = lineRowPlain;
constexpr auto& inkRowVector = inkRowPlain;
constexpr auto& cartoonRowVector = cartoonRowPlain;

#else

using planes::storeOrdered;

// Emboss ---------------------------------------------------------------------------------------

void reliefRowVector(const uint8_t* top, const uint8_t* bottom, uint8_t* grey, std::size_t count) {
  const Bytes d;
  const SignedBytes s;
  const auto middle = hn::Set(d, 0x80);
  for (std::size_t x = 0; x < count; x += kBlock) {
    const auto from = hn::BitCast(s, hn::Xor(hn::LoadU(d, top + x), middle));
    const auto to = hn::BitCast(s, hn::Xor(hn::LoadU(d, bottom + x + 2), middle));
    auto step = hn::SaturatedSub(to, from);
    for (int doubled = 1; doubled < 16; doubled *= 2) {
      step = hn::SaturatedAdd(step, step);
    }
    hn::StoreU(hn::Xor(hn::BitCast(d, step), middle), d, grey + x);
  }
}

// Sketch ---------------------------------------------------------------------------------------

#if ALG_IS_NEON()

// The root of n, rounded down, for bytes n / 256 of 64 and more: either this or one less, for 256
// numbers of 16 bits hold at most one square.
struct LastRoots {
  constexpr LastRoots() {
    int root = 128;
    for (int i = 0; i < static_cast<int>(sizeof of); ++i) {
      while ((root + 1) * (root + 1) < 256 * (i + 65)) {
        ++root;
      }
      of[i] = static_cast<uint8_t>(root);
    }
  }
  uint8_t of[192] = {};
};
constexpr LastRoots kLastRoots;

// Twice the roots of 16-bit numbers, rounded down and limited to 255; all numbers have been tried.
// Numbers are multiplied by powers of four until one of their two highest bits is set; their roots
// are divided again.
class DoubledRoots {
 public:
  DoubledRoots()
      : q0_(vld1q_u8_x4(kLastRoots.of)),
        q1_(vld1q_u8_x4(kLastRoots.of + 64)),
        q2_(vld1q_u8_x4(kLastRoots.of + 128)) {}

  HWY_INLINE uint8x16_t operator()(uint16x8_t lower, uint16x8_t upper) const {
    const uint16x8_t zeros0 = vclzq_u16(lower), zeros1 = vclzq_u16(upper);
    const uint16x8_t n0 = multiplied(lower, zeros0), n1 = multiplied(upper, zeros1);
    const uint16x8_t least = vdupq_n_u16(64 << 8);
    const uint8x16_t index = vsubhn_high_u16(vsubhn_u16(n0, least), n1, least);
    const uint8x16_t root = lastRoots(index);  // 0 of 0
    const uint8x8_t r0 = vget_low_u8(root), r1 = vget_high_u8(root);
    // Negative where that is too large, and at most 510.
    const uint16x8_t rest0 = vmlsl_u8(n0, r0, r0), rest1 = vmlsl_u8(n1, r1, r1);
    const auto bytes = [](uint16x8_t v) HWY_ATTR { return vreinterpretq_s8_u16(v); };
    const int8x16_t corrected =
        vsraq_n_s8(vreinterpretq_s8_u8(root), vuzp2q_s8(bytes(rest0), bytes(rest1)), 7);
    const int8x16_t zeros = vuzp1q_s8(bytes(zeros0), bytes(zeros1));
    return vqshlq_u8(vreinterpretq_u8_s8(corrected), vhsubq_s8(vdupq_n_s8(3), zeros));
  }

 private:
  static HWY_INLINE uint16x8_t multiplied(uint16x8_t n, uint16x8_t zeros) {
    return vshlq_u16(n, vreinterpretq_s16_u16(vbicq_u16(zeros, vdupq_n_u16(1))));
  }

  // A look-up beyond the table leaves the byte as it is.
  HWY_INLINE uint8x16_t lastRoots(uint8x16_t index) const {
    const uint8x16_t first = vqtbl4q_u8(q0_, index);
    const uint8x16_t second = vqtbx4q_u8(first, q1_, vsubq_u8(index, vdupq_n_u8(64)));
    return vqtbx4q_u8(second, q2_, vsubq_u8(index, vdupq_n_u8(128)));
  }

  const uint8x16x4_t q0_, q1_, q2_;
};

// Of 16 columns of windows: sums of their three bytes, and differences between top and bottom.
struct Columns {
  uint16x8_t sum0, sum1;
  int16x8_t step0, step1;
};

HWY_INLINE Columns columnsOf(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom) {
  const uint8x16_t t = vld1q_u8(top), m = vld1q_u8(middle), b = vld1q_u8(bottom);
  const uint8x8_t t0 = vget_low_u8(t), m0 = vget_low_u8(m), b0 = vget_low_u8(b);
  return {vaddw_u8(vaddl_u8(t0, b0), m0), vaddw_high_u8(vaddl_high_u8(t, b), m),
          vreinterpretq_s16_u16(vsubl_u8(t0, b0)), vreinterpretq_s16_u16(vsubl_high_u8(t, b))};
}

// The square of half the gradient of eight windows, or another number whose root exceeds 128.
HWY_INLINE uint16x8_t energy(uint16x8_t sum, uint16x8_t nextSum, int16x8_t step,
                             int16x8_t nextStep) {
  const int16x8_t both = vaddq_s16(step, vextq_s16(step, nextStep, 1));
  const int16x8_t three = vaddq_s16(both, vextq_s16(step, nextStep, 2));
  const uint16x8_t most = vdupq_n_u16(180);  // twice its square fits 16 bits
  const uint16x8_t y = vminq_u16(vreinterpretq_u16_s16(vabsq_s16(three)), most);
  const uint16x8_t x = vminq_u16(vabdq_u16(sum, vextq_u16(sum, nextSum, 2)), most);
  return vmlaq_u16(vmulq_u16(x, x), y, y);
}

void lineRowVector(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
                   std::size_t count) {
  const DoubledRoots doubledRoots;
  const auto columnsAt = [&](std::size_t x)
                             HWY_ATTR { return columnsOf(top + x, middle + x, bottom + x); };
  const auto draw = [&](std::size_t x, const Columns& c, const Columns& next) HWY_ATTR {
    const uint8x16_t length = doubledRoots(energy(c.sum0, c.sum1, c.step0, c.step1),
                                           energy(c.sum1, next.sum0, c.step1, next.step0));
    vst1q_u8(grey + x, vmvnq_u8(length));
  };
  static_assert(3 * kBlock <= kRowPadding);
  Columns even = columnsAt(0);
  for (std::size_t x = 0; x < count; x += 2 * kBlock) {
    const Columns odd = columnsAt(x + kBlock);
    draw(x, even, odd);
    even = columnsAt(x + 2 * kBlock);
    draw(x + kBlock, odd, even);
  }
}

#else

// The roots of squared gradients, rounded down and limited to 255. The float root is exact enough:
// one less than a square is below 2^17, so its root is further from the next integer than any
// rounding.
HWY_INLINE ByteVector roots(Ints4 energies) {
  const Ints d;
  for (IntVector& e : energies.part) {
    e = hn::ConvertTo(d, hn::Sqrt(hn::ConvertTo(Floats(), e)));
  }
  return narrow(energies);  // limits to 255
}

void lineRowVector(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
                   std::size_t count) {
  const Bytes d;
  for (std::size_t x = 0; x < count; x += kBlock) {
    const Gradient g = gradient<2, 1>(top + x, middle + x, bottom + x);
    hn::StoreU(hn::Not(roots(sumsOfSquares(g.x, g.y))), d, grey + x);
  }
}

#endif

// Prague ---------------------------------------------------------------------------------------

// Rows are taken in chunks and in three steps, because looking up works through memory: what has to
// be looked up, the entries, and what follows from them.
constexpr std::size_t kChunk = 256;  // windows

// What the steps between need of a block of windows: ranks to compare with, and numbers to look
// entries up by.
#if ALG_IS_NEON()

using Rank = int16_t;
using Number = uint16_t;

// Entries' offsets in bytes, as if the table began with float 0.
constexpr int kFirstNumber = EdgeSteps::kFirstBlock * static_cast<int>(sizeof(int32_t));

HWY_INLINE void storeSearch(const Ints4& energies, Rank* ranks, Number* numbers) {
  const auto bits = [&](std::size_t i) HWY_ATTR {
    return vreinterpretq_s32_f32(vcvtq_f32_s32(energies.part[i].raw));
  };
  const auto eight = [&](std::size_t i) HWY_ATTR {
    constexpr int kRank = EdgeSteps::kRankShift, kOffset = EdgeSteps::kBlockShift - 2;
    const int32x4_t low = bits(i), high = bits(i + 1);
    vst1q_s16(ranks + 4 * i, vshrn_high_n_s32(vshrn_n_s32(low, kRank), high, kRank));
    const int16x8_t offset = vshrn_high_n_s32(vshrn_n_s32(low, kOffset), high, kOffset);
    vst1q_u16(numbers + 4 * i, vbicq_u16(vreinterpretq_u16_s16(offset), vdupq_n_u16(3)));
  };
  eight(0);
  eight(2);
}

// Sixteen at a time, four out of a register. Numbers are offsets in bytes, which take an
// instruction less than counts; that of the first entry is kFirst.
template <int kFirst, class Entry>
HWY_INLINE void lookUp(const Entry* table, const uint16_t* numbers, Entry* entries,
                       std::size_t count) {
  const uintptr_t base = reinterpret_cast<uintptr_t>(table) - kFirst;
  for (std::size_t i = 0; i < count; i += kBlock) {
    uint64_t fours[kBlock / 4];
    std::memcpy(fours, numbers + i, sizeof fours);
    for (std::size_t k = 0; k < kBlock / 4; ++k) {
      const auto at = [base, four = fours[k]](int which) HWY_ATTR {
        return *reinterpret_cast<const Entry*>(base + (four >> (16 * which) & 0xFFFF));
      };
      const Entry found[4] = {at(0), at(1), at(2), at(3)};  // before any is stored
      std::copy_n(found, 4, entries + i + 4 * k);
    }
  }
}

HWY_INLINE ByteVector edgeGreys(const Rank* ranks, const int32_t* entries) {
  const auto eight = [](const Rank* own, const int32_t* found) HWY_ATTR {
    const int16x8x2_t halves = vld2q_s16(reinterpret_cast<const int16_t*>(found));
    const uint16x8_t stepped = vcgtq_s16(vld1q_s16(own), halves.val[1]);
    return vreinterpretq_u8_u16(vaddq_u16(vreinterpretq_u16_s16(halves.val[0]), stepped));
  };
  return ByteVector(vuzp1q_u8(eight(ranks, entries), eight(ranks + 8, entries + 8)));
}

#else

using Rank = int32_t;  // in the upper half, as in entries
using Number = int32_t;

constexpr int kFirstNumber = 0;

HWY_INLINE void storeSearch(const Ints4& energies, Rank* ranks, Number* numbers) {
  const Ints d;
  for (std::size_t i = 0; i < 4; ++i) {
    const IntVector bits = hn::BitCast(d, hn::ConvertTo(Floats(), energies.part[i]));
    const IntVector block =
        hn::Sub(hn::ShiftRight<EdgeSteps::kBlockShift>(bits), hn::Set(d, EdgeSteps::kFirstBlock));
    hn::Store(hn::ShiftLeft<16 - EdgeSteps::kRankShift>(bits), d, ranks + i * kBlock / 4);
    hn::Store(block, d, numbers + i * kBlock / 4);
  }
}

// Two numbers out of a register at a time, low half first; two registers a step, which is a tenth
// faster than one. `count` is a multiple of 4.
template <int kFirst>
HWY_INLINE void lookUp(const int32_t* table, const int32_t* numbers, int32_t* entries,
                       std::size_t count) {
  for (std::size_t i = 0; i < count; i += 4) {
    uint64_t pairs[2];
    std::memcpy(pairs, numbers + i, sizeof pairs);
    for (std::size_t k = 0; k < 2; ++k) {
      entries[i + 2 * k] = table[static_cast<uint32_t>(pairs[k])];
      entries[i + 2 * k + 1] = table[pairs[k] >> 32];
    }
  }
}

HWY_INLINE ByteVector edgeGreys(const Rank* ranks, const int32_t* entries) {
  const Ints d;
  Ints4 greys = load4(entries);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto stepped = hn::Gt(hn::Load(d, ranks + i * kBlock / 4), greys.part[i]);
    const IntVector moved = hn::Add(greys.part[i], hn::VecFromMask(d, stepped));
    greys.part[i] = hn::And(moved, hn::Set(d, 0xFF));
  }
  return narrow(greys);
}

#endif

HWY_INLINE void search(const PlaneWindow& w, std::size_t x, Rank* ranks, Number* numbers) {
  const Gradient g = gradient<1, 2>(w.top + x, w.middle + x, w.bottom + x);
  Ints4 energies = sumsOfSquares(g.x, g.y);
  for (IntVector& energy : energies.part) {
    energy = hn::Add(energy, hn::Set(Ints(), EdgeSteps::kOffset));
  }
  storeSearch(energies, ranks, numbers);
}

// Both halves of the overlay are the same product of v and grey, mirrored in the upper one.
HWY_INLINE ByteVector overlay(ByteVector v, ByteVector grey) {
  const SignedBytes s;
  const auto upperHalf = hn::Lt(hn::BitCast(s, v), hn::Zero(s));
  const ByteVector mirror = hn::BitCast(Bytes(), hn::VecFromMask(s, upperHalf));
  return hn::Xor(scaled(hn::Xor(grey, mirror), hn::Xor(v, mirror)), mirror);
}

// The inked bytes of one plane.
HWY_INLINE void inkPlane(const PlaneWindow& w, std::size_t from, std::size_t count,
                         const EdgeSteps& edges, uint8_t* inked) {
  const Bytes d;
  HWY_ALIGN Rank ranks[kChunk];
  HWY_ALIGN Number numbers[kChunk];
  HWY_ALIGN int32_t entries[kChunk];
  for (std::size_t x = 0; x < count; x += kBlock) {
    search(w, from + x, ranks + x, numbers + x);
  }
  lookUp<kFirstNumber>(edges.entries, numbers, entries, hwy::RoundUpTo(count, kBlock));
  for (std::size_t x = 0; x < count; x += kBlock) {
    const ByteVector grey = edgeGreys(ranks + x, entries + x);
    hn::Store(overlay(hn::LoadU(d, w.middle + from + x + 1), grey), d, inked + x);
  }
}

void inkRowVector(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                  const EdgeSteps& edges) {
  HWY_ALIGN uint8_t inked[kPackedBytes][kChunk];
  for (std::size_t from = 0; from < count; from += kChunk) {
    const std::size_t part = HWY_MIN(count - from, kChunk);
    for (int c = 0; c < kPackedBytes; ++c) {
      inkPlane(rows.plane(c), from, part, edges, inked[c]);
    }
    const auto join = [&](std::size_t x, uint8_t* to) HWY_ATTR {
      const Bytes d;
      storeOrdered(hn::Load(d, inked[2] + x), hn::Load(d, inked[1] + x), hn::Load(d, inked[0] + x),
                   to);
    };
    forEachBlock<kBlock>(part, join, Writes<kPackedBytes>{out + kPackedBytes * from});
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void reliefRow(const uint8_t* top, const uint8_t* bottom, uint8_t* grey, std::size_t count) {
  ALG_DISPATCH(reliefRowVector)(top, bottom, grey, count);
}

void lineRow(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
             std::size_t count) {
  ALG_DISPATCH(lineRowVector)(top, middle, bottom, grey, count);
}

void inkRow(const PlaneWindow& rows, uint8_t* out, std::size_t count, const EdgeSteps& edges) {
  ALG_DISPATCH(inkRowVector)(rows, out, count, edges);
}

void cartoonRow(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                const CartoonFactors& factors) {
  ALG_DISPATCH(cartoonRowVector)(rows, out, count, factors);
}

}  // namespace alg
#endif
