// The vector twin of the kernel that multiplies colours by their alpha, compiled once per target.
#include "base/image_size.h"
#include "kernels/vector_frame.h"
#include "platform/premultiply_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/premultiply_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if !ALG_HAS_VECTORS()

constexpr auto& premultiplyRowVector = premultiplyRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Halves = hn::Repartition<uint16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using HalfVector = hn::Vec<Halves>;

constexpr std::size_t kStep = hn::MaxLanes(Words());  // pixels

/// The quotient by 255 in the upper byte: with v = a x c + 127 it is (v + v / 256 + 1) / 256, for
/// all 65,536 pairs (tried), and no sum exceeds 65,407.
HWY_INLINE HalfVector quotient(HalfVector alpha, HalfVector channel) {
  const Halves d;
  const HalfVector v = hn::Add(hn::Mul(alpha, channel), hn::Set(d, 127));
  return hn::Add(v, hn::Add(hn::ShiftRight<8>(v), hn::Set(d, 1)));
}

void premultiplyRowVector(uint8_t* rgba, std::size_t pixels) {
  const Bytes bytes;
  const Halves halves;
  const Words words;
  const HalfVector low = hn::Set(halves, 0x00FF);
  const HalfVector one = hn::BitCast(halves, hn::Set(words, 0x00FF0000));  // alpha x 255 / 255
  std::size_t i = 0;
  for (; i + kStep <= pixels; i += kStep) {
    uint8_t* const at = rgba + kArgbBytes * i;
    const auto pixel = hn::BitCast(words, hn::LoadU(bytes, at));
    const auto single = hn::ShiftRight<24>(pixel);
    const HalfVector alpha = hn::BitCast(halves, hn::Or(single, hn::ShiftLeft<16>(single)));
    const HalfVector redBlue = hn::And(hn::BitCast(halves, pixel), low);
    const HalfVector greenOne = hn::Or(hn::ShiftRight<8>(hn::BitCast(halves, pixel)), one);
    const HalfVector even = hn::ShiftRight<8>(quotient(alpha, redBlue));
    const HalfVector odd = hn::AndNot(low, quotient(alpha, greenOne));
    hn::StoreU(hn::BitCast(bytes, hn::Or(even, odd)), bytes, at);
  }
  premultiplyRowPlain(rgba + kArgbBytes * i, pixels - i);
}

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void premultiplyRow(uint8_t* rgba, std::size_t pixels) {
  ALG_DISPATCH(premultiplyRowVector)(rgba, pixels);
}

}  // namespace alg
#endif
