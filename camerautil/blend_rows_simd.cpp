// Vector twins of the byte-wise blends, compiled once per vector target.
#include "camerautil/blend_rows.h"
#include "kernels/overlap.h"
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
constexpr auto& takeGreaterVector = takeGreaterPlain;
constexpr auto& takeLesserVector = takeLesserPlain;
constexpr auto& takeNearerVector = takeNearerPlain;
constexpr auto& takeFarthestVector = takeFarthestPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Halves = hn::Repartition<uint16_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;

// Of the blocks that a blend takes. In-order cores wait for each load and each result; several
// vectors at once keep them busy.
constexpr std::size_t kVectors = 4;
constexpr std::size_t kVectorBytes = hn::MaxLanes(Bytes());
constexpr std::size_t kBlock = kVectors * kVectorBytes;

/// dst[i] = blend(src[i], dst[i]), which goes through whole blocks of four pages in turn where they
/// are apart: a stream of its own for each page makes the processor fetch more of them ahead.
template <class Blend>
HWY_INLINE void blendInto(const uint8_t* src, uint8_t* dst, std::size_t n, Blend blend) {
  const auto block = [&](std::size_t /*x*/, const uint8_t* srcBytes, const uint8_t* dstBytes,
                         uint8_t* out) HWY_ATTR {
    const Bytes d;
    ByteVector from[kVectors], to[kVectors];
    HWY_UNROLL(4)
    for (std::size_t i = 0; i < kVectors; ++i) {
      from[i] = hn::LoadU(d, srcBytes + kVectorBytes * i);
      to[i] = hn::LoadU(d, dstBytes + kVectorBytes * i);
    }
    HWY_UNROLL(4)
    for (std::size_t i = 0; i < kVectors; ++i) {
      hn::StoreU(blend(from[i], to[i]), d, out + kVectorBytes * i);
    }
  };
  constexpr std::size_t kPage = 4096, kPages = 4;
  std::size_t done = 0;
  if (ALG_IS_AVX2() && n >= kPage * kPages && !overlap(src, n, dst, n)) {
    for (; done + kPage * kPages <= n; done += kPage * kPages) {
      for (std::size_t x = done; x < done + kPage; x += kBlock) {
        for (std::size_t page = 0; page < kPages; ++page) {
          const std::size_t at = x + kPage * page;
          block(at, src + at, dst + at, dst + at);
        }
      }
    }
  }
  forEachBlock<kBlock>(n - done, block, Reads<1>{src + done}, Reads<1>{dst + done},
                       Writes<1>{dst + done});
}

void takeGreaterVector(const uint8_t* src, uint8_t* dst, std::size_t n) {
  blendInto(src, dst, n, [](ByteVector from, ByteVector to) HWY_ATTR { return hn::Max(from, to); });
}

void takeLesserVector(const uint8_t* src, uint8_t* dst, std::size_t n) {
  blendInto(src, dst, n, [](ByteVector from, ByteVector to) HWY_ATTR { return hn::Min(from, to); });
}

// Even and odd bytes each in 16 bits, whose products wrap as the definition's do.
void addSharesVector(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
                     std::size_t n) {
#if ALG_IS_NEON()
  if (srcShare < 256 && dstShare < 256) {  // products of bytes, widened as they are multiplied
    const uint8x16_t srcBytes = vdupq_n_u8(static_cast<uint8_t>(srcShare));
    const uint8x16_t dstBytes = vdupq_n_u8(static_cast<uint8_t>(dstShare));
    const auto add = [=](ByteVector from, ByteVector to) HWY_ATTR {
      const uint16x8_t low = vmlal_u8(vmull_u8(vget_low_u8(to.raw), vget_low_u8(dstBytes)),
                                      vget_low_u8(from.raw), vget_low_u8(srcBytes));
      const uint16x8_t high = vmlal_high_u8(vmull_high_u8(to.raw, dstBytes), from.raw, srcBytes);
      return ByteVector(vuzp2q_u8(vreinterpretq_u8_u16(low), vreinterpretq_u8_u16(high)));
    };
    return blendInto(src, dst, n, add);
  }
#endif
  const Bytes d;
  const Halves h;
  const auto srcShares = hn::Set(h, srcShare);
  const auto dstShares = hn::Set(h, dstShare);
  const auto low = hn::Set(h, 0x00FF);
  const auto add = [=](ByteVector srcBytes, ByteVector dstBytes) HWY_ATTR {
    const auto from = hn::BitCast(h, srcBytes);
    const auto to = hn::BitCast(h, dstBytes);
    const auto even =
        hn::Add(hn::Mul(hn::And(to, low), dstShares), hn::Mul(hn::And(from, low), srcShares));
    const auto odd = hn::Add(hn::Mul(hn::ShiftRight<8>(to), dstShares),
                             hn::Mul(hn::ShiftRight<8>(from), srcShares));
    return hn::BitCast(d, hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd)));
  };
  blendInto(src, dst, n, add);
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
  forEachBlock<kVectorBytes>(n, take, Reads<1>{a}, Reads<1>{b}, Reads<1>{c}, Writes<1>{out});
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
  forEachBlock<kVectorBytes>(n, take, Reads<1>{a}, Reads<1>{b}, Reads<1>{c}, Writes<1>{a});
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

void takeGreater(const uint8_t* src, uint8_t* dst, std::size_t n) {
  ALG_DISPATCH(takeGreaterVector)(src, dst, n);
}

void takeLesser(const uint8_t* src, uint8_t* dst, std::size_t n) {
  ALG_DISPATCH(takeLesserVector)(src, dst, n);
}

void takeNearer(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out, std::size_t n) {
  ALG_DISPATCH(takeNearerVector)(a, b, c, out, n);
}

void takeFarthest(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n) {
  ALG_DISPATCH(takeFarthestVector)(a, b, c, n);
}

}  // namespace alg
#endif
