// Vector twins of the byte-wise blends, compiled once per vector target.
#include "camerautil/blend_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "camerautil/blend_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& addSharesVector = addSharesPlain;
constexpr auto& takeNearerVector = takeNearerPlain;
constexpr auto& takeFarthestVector = takeFarthestPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Halves = hn::Repartition<uint16_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());

// Even and odd bytes each in 16 bits, whose products wrap as the definition's do.
void addSharesVector(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
                     std::size_t n) {
  const Bytes d;
  const Halves h;
  const auto srcShares = hn::Set(h, srcShare);
  const auto dstShares = hn::Set(h, dstShare);
  const auto low = hn::Set(h, 0x00FF);
  const auto add = [&](std::size_t /*x*/, const uint8_t* srcBytes, const uint8_t* dstBytes,
                       uint8_t* sums) HWY_ATTR {
    const auto from = hn::BitCast(h, hn::LoadU(d, srcBytes));
    const auto to = hn::BitCast(h, hn::LoadU(d, dstBytes));
    const auto even =
        hn::Add(hn::Mul(hn::And(to, low), dstShares), hn::Mul(hn::And(from, low), srcShares));
    const auto odd = hn::Add(hn::Mul(hn::ShiftRight<8>(to), dstShares),
                             hn::Mul(hn::ShiftRight<8>(from), srcShares));
    const auto sum = hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd));
    hn::StoreU(hn::BitCast(d, sum), d, sums);
  };
  forEachBlock<kBlock>(n, add, Reads<1>{src}, Reads<1>{dst}, Writes<1>{dst});
}

HWY_INLINE ByteVector distance(ByteVector a, ByteVector b) {
#if ALG_IS_NEON()
  return ByteVector(vabdq_u8(a.raw, b.raw));
#else
  return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
#endif
}

/// Where a < b as unsigned bytes, `yes`, else `no`.
HWY_INLINE ByteVector whereLess(ByteVector a, ByteVector b, ByteVector yes, ByteVector no) {
  return hn::IfThenElse(hn::Eq(hn::Max(a, b), a), no, yes);
}

void takeNearerVector(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out,
                      std::size_t n) {
  const auto take = [](std::size_t /*x*/, const uint8_t* fromA, const uint8_t* fromB,
                       const uint8_t* fromC, uint8_t* to) HWY_ATTR {
    const Bytes d;
    const ByteVector va = hn::LoadU(d, fromA), vb = hn::LoadU(d, fromB), vc = hn::LoadU(d, fromC);
    hn::StoreU(whereLess(distance(vb, va), distance(vc, va), vb, vc), d, to);
  };
  forEachBlock<kBlock>(n, take, Reads<1>{a}, Reads<1>{b}, Reads<1>{c}, Writes<1>{out});
}

void takeFarthestVector(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n) {
  const auto take = [](std::size_t /*x*/, const uint8_t* fromA, const uint8_t* fromB,
                       const uint8_t* fromC, uint8_t* to) HWY_ATTR {
    const Bytes d;
    const ByteVector va = hn::LoadU(d, fromA), vb = hn::LoadU(d, fromB), vc = hn::LoadU(d, fromC);
    const ByteVector distanceB = distance(vb, va), distanceC = distance(vc, va);
    const ByteVector other = whereLess(distanceB, distanceC, vc, vb);
    hn::StoreU(whereLess(hn::Min(distanceB, distanceC), distance(vb, vc), other, va), d, to);
  };
  forEachBlock<kBlock>(n, take, Reads<1>{a}, Reads<1>{b}, Reads<1>{c}, Writes<1>{a});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void addShares(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
               std::size_t n) {
  ALG_DISPATCH(addSharesVector)(src, srcShare, dst, dstShare, n);
}

void takeNearer(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out, std::size_t n) {
  ALG_DISPATCH(takeNearerVector)(a, b, c, out, n);
}

void takeFarthest(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n) {
  ALG_DISPATCH(takeFarthestVector)(a, b, c, n);
}

}  // namespace alg
#endif
