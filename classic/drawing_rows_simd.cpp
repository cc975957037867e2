// Vector twins of the drawing effects' row kernels, compiled once per vector target. Each works on
// a whole vector of bytes at a time, which become two vectors of 16-bit and four of 32-bit lanes.
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
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& reliefRowVector = reliefRowPlain;
constexpr auto& lineRowVector = lineRowPlain;
constexpr auto& inkRowVector = inkRowPlain;
constexpr auto& cartoonRowVector = cartoonRowPlain;

#else

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

// The roots of squared gradients, rounded down and limited to 255. The float root is exact enough:
// one less than a square is below 2^17, so its root is further from the next integer than any
// rounding.
#if ALG_IS_NEON()
// A hardware root takes long. An estimate with one step of refinement, rounded to the nearest, is
// the root or the integer above it, in which case its square is too large. (Of 0, the estimate's
// product is not a number and becomes 0.)
HWY_INLINE ByteVector roots(const Ints4& energies) {
  const auto nearest = [](uint32x4_t limited) HWY_ATTR {
    const float32x4_t e = vcvtq_f32_u32(limited);
    const float32x4_t r = vrsqrteq_f32(e);
    const float32x4_t root = vmulq_f32(e, r);
    return vcvtnq_u32_f32(vmulq_f32(root, vrsqrtsq_f32(root, r)));
  };
  const auto eight = [&](IntVector a, IntVector b) HWY_ATTR {
    const uint32x4_t most = vdupq_n_u32(255 * 255);
    const uint32x4_t ea = vminq_u32(vreinterpretq_u32_s32(a.raw), most);
    const uint32x4_t eb = vminq_u32(vreinterpretq_u32_s32(b.raw), most);
    const auto narrowed = [](uint32x4_t x, uint32x4_t y) HWY_ATTR {
      return vuzp1q_u16(vreinterpretq_u16_u32(x), vreinterpretq_u16_u32(y));
    };
    const uint16x8_t root = narrowed(nearest(ea), nearest(eb));
    return vaddq_u16(root, vcgtq_u16(vmulq_u16(root, root), narrowed(ea, eb)));
  };
  const uint16x8_t lower = eight(energies.part[0], energies.part[1]);
  const uint16x8_t upper = eight(energies.part[2], energies.part[3]);
  return ByteVector(vuzp1q_u8(vreinterpretq_u8_u16(lower), vreinterpretq_u8_u16(upper)));
}
#else
HWY_INLINE ByteVector roots(Ints4 energies) {
  const Ints d;
  for (IntVector& e : energies.part) {
    e = hn::ConvertTo(d, hn::Sqrt(hn::ConvertTo(Floats(), e)));
  }
  return narrow(energies);  // limits to 255
}
#endif

void lineRowVector(const uint8_t* top, const uint8_t* middle, const uint8_t* bottom, uint8_t* grey,
                   std::size_t count) {
  const Bytes d;
  for (std::size_t x = 0; x < count; x += kBlock) {
    const Gradient g = gradient<2, 1>(top + x, middle + x, bottom + x);
    hn::StoreU(hn::Not(roots(sumsOfSquares(g.x, g.y))), d, grey + x);
  }
}

// Prague ---------------------------------------------------------------------------------------

// Rows are taken in chunks and in three steps, because looking up works through memory: what has to
// be looked up, the entries, and what follows from them.
constexpr std::size_t kChunk = 256;  // windows

// Gradients times 16 make energies times 256, which is what entries compare with.
HWY_INLINE void takeEnergies(const PlaneWindow& w, std::size_t x, int32_t* energies,
                             int32_t* blocks) {
  const Ints d;
  const Gradient g = gradient<16, 2>(w.top + x, w.middle + x, w.bottom + x);
  const Ints4 sums = sumsOfSquares(g.x, g.y);
  for (std::size_t i = 0; i < 4; ++i) {
    const IntVector energy = hn::Add(sums.part[i], hn::Set(d, EdgeSteps::kOffset << 8));
    const IntVector bits = hn::BitCast(d, hn::ConvertTo(Floats(), energy));
    const IntVector block =
        hn::Sub(hn::ShiftRight<EdgeSteps::kBlockShift>(bits), hn::Set(d, EdgeSteps::kFirstBlock));
    hn::Store(energy, d, energies + i * kBlock / 4);
    hn::Store(block, d, blocks + i * kBlock / 4);
  }
}

// Two numbers out of a register at a time, low half first; two registers a step, which is a tenth
// faster than one. `count` is a multiple of 4.
HWY_INLINE void lookUp(const int32_t* table, int32_t* values, std::size_t count) {
  for (std::size_t i = 0; i < count; i += 4) {
    uint64_t pairs[2];
    std::memcpy(pairs, values + i, sizeof pairs);
    for (std::size_t k = 0; k < 2; ++k) {
      values[i + 2 * k] = table[static_cast<uint32_t>(pairs[k])];
      values[i + 2 * k + 1] = table[pairs[k] >> 32];
    }
  }
}

HWY_INLINE ByteVector edgeGreys(const int32_t* energies, const int32_t* entries) {
  const Ints d;
  Ints4 greys = load4(entries);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto stepped = hn::Gt(hn::Load(d, energies + i * kBlock / 4), greys.part[i]);
    const IntVector moved = hn::Add(greys.part[i], hn::VecFromMask(d, stepped));
    greys.part[i] = hn::And(moved, hn::Set(d, 0xFF));
  }
  return narrow(greys);
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
  HWY_ALIGN int32_t energies[kChunk], entries[kChunk];
  for (std::size_t x = 0; x < count; x += kBlock) {
    takeEnergies(w, from + x, energies + x, entries + x);
  }
  lookUp(edges.entries, entries, hwy::RoundUpTo(count, kBlock));
  for (std::size_t x = 0; x < count; x += kBlock) {
    const ByteVector grey = edgeGreys(energies + x, entries + x);
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
      hn::StoreInterleaved3(hn::Load(d, inked[2] + x), hn::Load(d, inked[1] + x),
                            hn::Load(d, inked[0] + x), d, to);
    };
    forEachBlock<kBlock>(part, join, Writes<kPackedBytes>{out + kPackedBytes * from});
  }
}

// PragueCarton ---------------------------------------------------------------------------------

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

// The numbers of a block's factors; planes of them are a chunk apart.
HWY_INLINE void takeNumbers(const PlaneWindow& rows, std::size_t x, int32_t* numbers) {
  const Brightest most = brightest(rows, x);
  for (std::size_t c = 0; c < kPackedBytes; ++c) {
    const Ints4 number = widened(plusThrice(most.all, most.of[c]));
    for (std::size_t i = 0; i < 4; ++i) {
      hn::Store(number.part[i], Ints(), numbers + c * kChunk + i * kBlock / 4);
    }
  }
}

// The high bytes of the products.
HWY_INLINE ByteVector scaledBy(const int32_t* factors, ByteVector v) {
  const Ints d;
  const hn::RebindToUnsigned<Ints> u;
  Ints4 products = widened(v);
  for (std::size_t i = 0; i < 4; ++i) {
    const IntVector product = hn::Mul(products.part[i], hn::Load(d, factors + i * kBlock / 4));
    products.part[i] = hn::BitCast(d, hn::ShiftRight<24>(hn::BitCast(u, product)));
  }
  return narrow(products);
}

void cartoonRowVector(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                      const CartoonFactors& factors) {
  HWY_ALIGN int32_t looked[kPackedBytes][kChunk];  // at first the numbers of the factors
  for (std::size_t from = 0; from < count; from += kChunk) {
    const std::size_t part = HWY_MIN(count - from, kChunk);
    for (std::size_t x = 0; x < part; x += kBlock) {
      takeNumbers(rows, from + x, looked[0] + x);
    }
    for (int c = 0; c < kPackedBytes; ++c) {
      lookUp(factors.entries, looked[c], hwy::RoundUpTo(part, kBlock));
    }
    const auto scale = [&](std::size_t x, uint8_t* to) HWY_ATTR {
      const Bytes d;
      ByteVector result[kPackedBytes];
      for (int c = 0; c < kPackedBytes; ++c) {
        const ByteVector v = hn::LoadU(d, rows.plane(c).middle + from + x + 1);
        result[c] = scaledBy(looked[c] + x, v);
      }
      hn::StoreInterleaved3(result[2], result[1], result[0], d, to);
    };
    forEachBlock<kBlock>(part, scale, Writes<kPackedBytes>{out + kPackedBytes * from});
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
  const hn::Vec<Floats> half{
      _mm256_blendv_ps(_mm256_set1_ps(0.5f), _mm256_set1_ps(-0.5f), excess.raw)};
  const auto dividend = hn::MulAdd(hn::ConvertTo(d, v), hn::Set(d, 1020.0f), half);
  return IntVector{_mm256_cvttps_epi32(hn::Mul(dividend, factor).raw)};  // never out of range
}

// Byte kByte of each lane.
template <int kByte>
HWY_INLINE IntVector pick(ByteVector v) {
  const __m256i lanes = _mm256_setr_epi32(0, 4, 8, 12, 0, 4, 8, 12);
  const __m256i zeros = _mm256_set1_epi32(kByte - 256);  // but for the low byte
  return IntVector{_mm256_shuffle_epi8(v.raw, _mm256_or_si256(lanes, zeros))};
}

// The low halves of lanes a, and of lanes b above them.
HWY_INLINE __m256i joined(IntVector a, IntVector b) {
  return _mm256_blend_epi16(a.raw, hn::ShiftLeft<16>(b).raw, 0xAA);
}

// Bytes stay in their lanes: n is that of the even bytes and that of the odd ones.
HWY_INLINE ByteVector quotients(const Shorts2& n, ByteVector v) {
  const Ints d;
  const auto low = hn::Set(d, 0xFFFF);
  const IntVector even = hn::BitCast(d, n.lower), odd = hn::BitCast(d, n.upper);
  const IntVector q0 = quotient(hn::And(even, low), pick<0>(v));
  const IntVector q2 = quotient(hn::ShiftRight<16>(even), pick<2>(v));
  const __m256i evenBytes = _mm256_and_si256(joined(q0, q2), _mm256_set1_epi16(0xFF));
  const IntVector q1 = quotient(hn::And(odd, low), pick<1>(v));
  const IntVector q3 = quotient(hn::ShiftRight<16>(odd), pick<3>(v));
  return ByteVector{_mm256_or_si256(evenBytes, _mm256_slli_epi16(joined(q1, q3), 8))};
}

void cartoonRowVector(const PlaneWindow& rows, uint8_t* out, std::size_t count,
                      const CartoonFactors& /*factors*/) {
  const auto divide = [&](std::size_t x, uint8_t* to) HWY_ATTR {
    const Bytes d;
    const __m256i one = _mm256_set1_epi16(1);
    const Brightest most = brightest(rows, x);
    const __m256i evenLimit =
        _mm256_add_epi16(_mm256_and_si256(most.all.raw, _mm256_set1_epi16(0xFF)), one);
    const __m256i oddLimit = _mm256_add_epi16(_mm256_srli_epi16(most.all.raw, 8), one);
    ByteVector result[kPackedBytes];
    for (int c = 0; c < kPackedBytes; ++c) {
      const __m256i evenThrice = _mm256_maddubs_epi16(most.of[c].raw, _mm256_set1_epi16(3));
      const __m256i oddThrice = _mm256_maddubs_epi16(most.of[c].raw, _mm256_set1_epi16(3 << 8));
      const Shorts2 n = {ShortVector{_mm256_add_epi16(evenLimit, evenThrice)},
                         ShortVector{_mm256_add_epi16(oddLimit, oddThrice)}};
      result[c] = quotients(n, hn::LoadU(d, rows.plane(c).middle + x + 1));
    }
    hn::StoreInterleaved3(result[2], result[1], result[0], d, to);
  };
  forEachBlock<kBlock>(count, divide, Writes<kPackedBytes>{out});
}

#endif  // NEON or AVX2

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
