// Vector twin of nature's row kernel, compiled once per vector target: floats only.
//
// With m = MAX, D = MAX - MIN and r = 1 / m as rounded, in real numbers
//
//     k  =  c^2 / m               v  =  (c m - (c - k) D) / m
//
// Both quotients are of integers below 2^16 by one below 2^8, so that (n + 0.5) r has the integer
// part of n / m, and (n - 0.5) r the one below where m divides n. That is what the definition's
// roundings make of it whenever their sum is negative, and where m does not divide n they are too
// small to matter. Their signs come from fused steps, whose results are exact:
//
//     for k:   m r - 1
//     for v:   m (round(k s) - k s) - (c - k) (m s - D)
//
// All of it has been compared with the definition over all c, m and D (and a test does).
#define ALG_ALSO_AVX512
#include "base/image_size.h"
#include "classic/nature_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/nature_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& boostRowVector = boostRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using planes::Bytes;
using planes::ByteVector;
using planes::Planes;
using Words = hn::Repartition<uint32_t, Bytes>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Floats = hn::Repartition<float, Bytes>;
using WordVector = hn::Vec<Words>;
using FloatVector = hn::Vec<Floats>;

// All channels in the home order of channel 1.
HWY_INLINE Planes aligned(const Planes& p) {
  return {{planes::rehome<0, 1>(p.of[0]), p.of[1], planes::rehome<2, 1>(p.of[2])}};
}

// Byte kByte of each four.
template <int kByte>
HWY_INLINE FloatVector pick(ByteVector v) {
  const Words d;
  const WordVector lowest = hn::Set(d, 0xFF);
  const WordVector shifted = hn::ShiftRight<8 * kByte>(hn::BitCast(d, v));
  const WordVector byte = kByte == 3 ? shifted : hn::And(shifted, lowest);
  return hn::ConvertTo(Floats(), hn::BitCast(Ints(), byte));
}

// The integer part of n r, or of what lies just below it: 0.5 with the sign of `error` is added to
// n.
HWY_INLINE FloatVector nudged(FloatVector n, FloatVector error, FloatVector r) {
  const Floats d;
  return hn::Mul(hn::Add(n, hn::CopySignToAbs(hn::Set(d, 0.5f), error)), r);
}

// What the channels of a pixel share.
struct Saturation {
  HWY_INLINE Saturation(FloatVector max, FloatVector range)
      : m(max), difference(range), r(hn::Div(hn::Set(Floats(), 1.0f), m)), s(hn::Mul(range, r)) {
    const Floats d;
    half = hn::CopySignToAbs(hn::Set(d, 0.5f), hn::MulSub(m, r, hn::Set(d, 1.0f)));
    error = hn::MulSub(s, m, difference);
  }

  HWY_INLINE WordVector operator()(FloatVector c) const {
    const FloatVector k = hn::Trunc(hn::Mul(hn::MulAdd(c, c, half), r));
    const FloatVector taken = hn::Sub(c, k);
    const FloatVector ks = hn::Mul(k, s);
    const FloatVector rounding = hn::NegMulAdd(k, s, ks);
    const FloatVector errors = hn::MulSub(rounding, m, hn::Mul(taken, error));
    const FloatVector n = hn::NegMulAdd(taken, difference, hn::Mul(c, m));
    return hn::BitCast(Words(), ops::truncated(nudged(n, errors, r)));
  }

  FloatVector m, difference, r, s, half, error;
};

template <int kByte>
HWY_INLINE void saturate(const Planes& p, ByteVector max, ByteVector range, WordVector* joined) {
  const Saturation saturated(pick<kByte>(max), pick<kByte>(range));
  for (int c = 0; c < kPackedBytes; ++c) {
    const WordVector v = hn::ShiftLeft<8 * kByte>(saturated(pick<kByte>(p.of[c])));
    joined[c] = kByte == 0 ? v : hn::Or(joined[c], v);
  }
}

// v + (v - 128) / 2, rounded towards v, limited to bytes.
HWY_INLINE ByteVector contrast(ByteVector v) {
  const Bytes d;
  const auto middle = hn::Set(d, 128);
  const auto above = hn::ShiftRight<1>(hn::SaturatedSub(v, middle));
  const auto below = hn::ShiftRight<1>(hn::SaturatedSub(middle, v));
  return hn::SaturatedSub(hn::SaturatedAdd(v, above), below);
}

HWY_INLINE void boostBlock(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out) {
  const Bytes d;
  const Planes n = aligned(planes::load(neighbours));
  const Planes p = aligned(planes::load(pixels));
  const auto most = [](const Planes& of)
                        HWY_ATTR { return hn::Max(of.of[0], hn::Max(of.of[1], of.of[2])); };
  const ByteVector nearest = most(n);
  const auto blueIsNotLeast = hn::Eq(hn::Max(n.of[0], hn::Min(n.of[1], n.of[2])), n.of[0]);
  const ByteVector least = hn::Min(hn::Min(p.of[0], hn::Min(p.of[1], p.of[2])),
                                   hn::IfThenElse(blueIsNotLeast, nearest, n.of[0]));
  const ByteVector max = hn::Max(most(p), nearest);
  const ByteVector range = hn::Sub(max, least);
  const ByteVector divisor = hn::Max(max, hn::Set(d, 1));  // of 0 all else is 0, too
  WordVector joined[kPackedBytes];
  saturate<0>(p, divisor, range, joined);
  saturate<1>(p, divisor, range, joined);
  saturate<2>(p, divisor, range, joined);
  saturate<3>(p, divisor, range, joined);
  const auto boosted = [&](int c) HWY_ATTR { return contrast(hn::BitCast(d, joined[c])); };
  planes::store({{planes::rehome<1, 0>(boosted(2)), boosted(1), planes::rehome<1, 2>(boosted(0))}},
                out);
}

void boostRowVector(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out,
                    std::size_t count) {
  const auto boost = [](std::size_t /*x*/, const uint8_t* beside, const uint8_t* from, uint8_t* to)
                         HWY_ATTR { boostBlock(beside, from, to); };
  forEachBlock<planes::kLanes>(count, boost, Reads<kPackedBytes>{neighbours},
                               Reads<kPackedBytes>{pixels}, Writes<kPackedBytes>{out});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void boostRow(const uint8_t* neighbours, const uint8_t* pixels, uint8_t* out, std::size_t count) {
  ALG_DISPATCH(boostRowVector)(neighbours, pixels, out, count);
}

}  // namespace alg
#endif
