// Vector twin of the curve mapper, compiled once per vector target.
#include <cstring>

#include "base/image_size.h"
#include "kernels/curve_map.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/curve_map_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors the definition is the fastest there is.
void mapCurvesVector(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  mapCurvesPlain(src, dst, pixels, curves);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

// Looks 256 entries up as sixteen rows of sixteen: an index inside the row becomes 0..15, any other
// gets bit 7, for which the row's lookup gives 0.
ByteVector lookUp(Bytes d, const uint8_t* curve, ByteVector index) {
  ByteVector result = hn::Zero(d);
  for (int row = 0; row < 16; ++row) {
    const ByteVector entries = hn::LoadDup128(d, curve + 16 * row);
    const ByteVector offset = hn::Xor(index, hn::Set(d, static_cast<uint8_t>(16 * row)));
    const ByteVector inRow = hn::And(hn::SaturatedAdd(offset, hn::Set(d, 0x70)), hn::Set(d, 0x8F));
    result = hn::Or(result, hn::TableLookupBytesOr0(entries, inRow));
  }
  return result;
}

void mapCurvesVector(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  const Bytes d;
  const std::size_t lanes = hn::Lanes(d);
  const auto mapBlock = [&](const uint8_t* from, uint8_t* to) HWY_ATTR {
    ByteVector p0, p1, p2;
    hn::LoadInterleaved3(d, from, p0, p1, p2);
    hn::StoreInterleaved3(lookUp(d, curves.curve[2], p2), lookUp(d, curves.curve[1], p1),
                          lookUp(d, curves.curve[0], p0), d, to);
  };
  std::size_t i = 0;
  for (; i + lanes <= pixels; i += lanes) {
    mapBlock(src + kPackedBytes * i, dst + kPackedBytes * i);
  }
  if (i < pixels) {
    uint8_t tail[kPackedBytes * hn::MaxLanes(d)] = {};
    const std::size_t bytes = kPackedBytes * (pixels - i);
    std::memcpy(tail, src + kPackedBytes * i, bytes);
    mapBlock(tail, tail);
    std::memcpy(dst + kPackedBytes * i, tail, bytes);
  }
}

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

HWY_EXPORT(mapCurvesVector);

void mapCurvesSimd(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  HWY_DYNAMIC_DISPATCH(mapCurvesVector)(src, dst, pixels, curves);
}

}  // namespace alg
#endif
