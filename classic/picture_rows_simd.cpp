// Vector twins of the picture effects' row kernels, compiled once per vector target.
#include "base/image_size.h"
#include "classic/picture_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/picture_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& paintRowVector = paintRowPlain;
constexpr auto& layRowVector = layRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Shorts = hn::Repartition<uint16_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kLanes = hn::MaxLanes(Bytes());  // pixels a step

HWY_INLINE void paintBlock(const uint8_t* src, const uint8_t* paint, uint8_t* dst) {
  const Bytes d;
  ByteVector b, g, r, paintB, paintG, paintR;
  hn::LoadInterleaved3(d, src, b, g, r);
  hn::LoadInterleaved3(d, paint, paintB, paintG, paintR);
  hn::StoreInterleaved3(hn::SaturatedAdd(r, paintR), hn::SaturatedAdd(g, paintG),
                        hn::SaturatedAdd(b, paintB), d, dst);
}

// Even and odd bytes take turns in 16-bit lanes: of the sums, which fit, the upper bytes remain.
HWY_INLINE ByteVector layOver(ByteVector alpha, ByteVector front, ByteVector value) {
  const Bytes d;
  const Shorts shorts;
  const auto lowBytes = hn::Set(shorts, 0xFF);
  const auto even = [&](ByteVector v)
                        HWY_ATTR { return hn::And(hn::BitCast(shorts, v), lowBytes); };
  const auto odd = [&](ByteVector v) HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(shorts, v)); };
  const ByteVector rest = hn::Not(alpha);  // 255 - alpha
  const auto sum0 = hn::Add(hn::Mul(even(alpha), even(front)), hn::Mul(even(rest), even(value)));
  const auto sum1 = hn::Add(hn::Mul(odd(alpha), odd(front)), hn::Mul(odd(rest), odd(value)));
  return hn::BitCast(d, hn::Or(hn::ShiftRight<8>(sum0), hn::AndNot(lowBytes, sum1)));
}

HWY_INLINE void layBlock(const uint8_t* src, const uint8_t* front, const uint8_t* mask,
                         uint8_t* dst) {
  const Bytes d;
  ByteVector b, g, r, frontR, frontG, frontB, alpha, unused0, unused1, unused2, maskAlpha;
  hn::LoadInterleaved3(d, src, b, g, r);
  hn::LoadInterleaved4(d, front, frontR, frontG, frontB, alpha);
  hn::LoadInterleaved4(d, mask, unused0, unused1, unused2, maskAlpha);
  const ByteVector kept = hn::VecFromMask(d, hn::Eq(maskAlpha, hn::Zero(d)));
  const auto shown = [&](ByteVector v) HWY_ATTR { return hn::Xor(v, hn::Not(kept)); };
  hn::StoreInterleaved3(layOver(alpha, frontR, shown(r)), layOver(alpha, frontG, shown(g)),
                        layOver(alpha, frontB, shown(b)), d, dst);
}

void paintRowVector(const uint8_t* src, const uint8_t* paint, uint8_t* dst, std::size_t pixels) {
  const auto block = [](std::size_t /*x*/, const uint8_t* from, const uint8_t* with, uint8_t* to)
                         HWY_ATTR { paintBlock(from, with, to); };
  forEachBlock<kLanes>(pixels, block, Reads<kPackedBytes>{src}, Reads<kPackedBytes>{paint},
                       Writes<kPackedBytes>{dst});
}

void layRowVector(const uint8_t* src, const uint8_t* front, const uint8_t* mask, uint8_t* dst,
                  std::size_t pixels) {
  const auto block = [](std::size_t /*x*/, const uint8_t* from, const uint8_t* over,
                        const uint8_t* under, uint8_t* to)
                         HWY_ATTR { layBlock(from, over, under, to); };
  forEachBlock<kLanes>(pixels, block, Reads<kPackedBytes>{src}, Reads<kArgbBytes>{front},
                       Reads<kArgbBytes>{mask}, Writes<kPackedBytes>{dst});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void paintRow(const uint8_t* src, const uint8_t* paint, uint8_t* dst, std::size_t pixels) {
  ALG_DISPATCH(paintRowVector)(src, paint, dst, pixels);
}

void layRow(const uint8_t* src, const uint8_t* front, const uint8_t* mask, uint8_t* dst,
            std::size_t pixels) {
  ALG_DISPATCH(layRowVector)(src, front, mask, dst, pixels);
}

}  // namespace alg
#endif
