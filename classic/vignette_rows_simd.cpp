// Vector twin of the vignette's row kernel, compiled once per vector target.
//
// A stretch of the row becomes bytes, goes through the curve mapper and becomes ints again, in the
// disc as it is, outside times the brightness of its pixels. Where both ends of a block lie in the
// disc, so does the rest.
#include "base/image_size.h"
#include "classic/vignette_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/vignette_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& shadeRowVector = shadeRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Ints = hn::ScalableTag<int32_t>;
using Floats = hn::Rebind<float, Ints>;
using Bytes = hn::Rebind<uint8_t, Ints>;
using FloatVector = hn::Vec<Floats>;
using IntVector = hn::Vec<Ints>;

constexpr std::size_t kLanes = hn::MaxLanes(Ints());
constexpr std::size_t kBlock = 16;     // pixels a step
constexpr std::size_t kStretch = 512;  // pixels that go through the curve mapper together
constexpr std::size_t kIntPixel = kPackedBytes * sizeof(int32_t);

#if ALG_IS_NEON()

// Sixteen at a time: what loops of one vector take is mostly waiting.
HWY_INLINE void takeBytes(const uint8_t* ints, uint8_t* bytes) {
  const auto* from = reinterpret_cast<const int32_t*>(ints);
  for (std::size_t i = 0; i < kPackedBytes * kBlock; i += 16) {
    const uint16x8_t low =
        vqmovun_high_s32(vqmovun_s32(vld1q_s32(from + i)), vld1q_s32(from + i + 4));
    const uint16x8_t high =
        vqmovun_high_s32(vqmovun_s32(vld1q_s32(from + i + 8)), vld1q_s32(from + i + 12));
    vst1q_u8(bytes + i, vqmovn_high_u16(vqmovn_u16(low), high));
  }
}

HWY_INLINE void giveBytes(const uint8_t* bytes, uint8_t* ints) {
  auto* to = reinterpret_cast<uint32_t*>(ints);
  for (std::size_t i = 0; i < kPackedBytes * kBlock; i += 16) {
    const uint8x16_t v = vld1q_u8(bytes + i);
    const uint16x8_t low = vmovl_u8(vget_low_u8(v)), high = vmovl_high_u8(v);
    vst1q_u32(to + i, vmovl_u16(vget_low_u16(low)));
    vst1q_u32(to + i + 4, vmovl_high_u16(low));
    vst1q_u32(to + i + 8, vmovl_u16(vget_low_u16(high)));
    vst1q_u32(to + i + 12, vmovl_high_u16(high));
  }
}

#else

HWY_INLINE void takeBytes(const uint8_t* ints, uint8_t* bytes) {
  const Ints d;
  for (std::size_t i = 0; i < kPackedBytes * kBlock; i += kLanes) {
    const auto* from = reinterpret_cast<const int32_t*>(ints) + i;
    hn::StoreU(hn::DemoteTo(Bytes(), hn::LoadU(d, from)), Bytes(), bytes + i);
  }
}

HWY_INLINE void giveBytes(const uint8_t* bytes, uint8_t* ints) {
  const Ints d;
  for (std::size_t i = 0; i < kPackedBytes * kBlock; i += kLanes) {
    auto* to = reinterpret_cast<int32_t*>(ints) + i;
    hn::StoreU(hn::PromoteTo(d, hn::LoadU(Bytes(), bytes + i)), d, to);
  }
}

#endif

HWY_INLINE IntVector wide(const uint8_t* bytes) {
  return hn::PromoteTo(Ints(), hn::LoadU(Bytes(), bytes));
}

class Shader {
 public:
  Shader(const Vignette& vignette, int rowTerm) : v_(vignette), rowTerm_(rowTerm) {
    for (std::size_t i = 0; i < kPackedBytes * kLanes; ++i) {
      thirds_[i] = static_cast<int32_t>(i / kPackedBytes);
    }
  }

  HWY_INLINE void block(int x, const uint8_t* bytes, uint8_t* ints) const {
    if (inDisc(x) && inDisc(x + static_cast<int>(kBlock) - 1)) {
      return giveBytes(bytes, ints);
    }
    for (std::size_t k = 0; k < kBlock; k += kLanes) {
      const FloatVector bright = brightness(x + static_cast<int>(k));
      for (std::size_t c = 0; c < kPackedBytes; ++c) {
        const std::size_t i = kPackedBytes * k + c * kLanes;
        const auto each = hn::SetTableIndices(Floats(), thirds_ + c * kLanes);
        const FloatVector value = hn::ConvertTo(Floats(), wide(bytes + i));
        const IntVector shaded = ops::truncated(hn::Mul(value, hn::TableLookupLanes(bright, each)));
        hn::StoreU(shaded, Ints(), reinterpret_cast<int32_t*>(ints) + i);
      }
    }
  }

 private:
  bool inDisc(int x) const { return v_.distance2(rowTerm_, x) <= v_.inner; }

  HWY_INLINE FloatVector brightness(int x) const {
    const Ints d;
    const Floats floats;
    const auto offset = hn::Sub(hn::Set(d, v_.halfWidth - x), hn::Iota(d, 0));
    const auto across = hn::ShiftRight<15>(hn::Mul(offset, hn::Set(d, v_.columnScale())));
    const auto far2 = hn::Add(hn::Mul(across, across), hn::Set(d, rowTerm_));
    const auto rest = hn::ConvertTo(floats, hn::Sub(hn::Set(d, v_.radius2), far2));
    const auto t = hn::Mul(rest, hn::Set(floats, v_.reciprocal));
    const auto half = hn::Set(floats, 0.5f);
    const auto u = hn::Mul(t, t);
    const auto outside = hn::Add(hn::Mul(half, u), hn::Mul(half, hn::Mul(u, u)));
    const auto isOutside = hn::RebindMask(floats, hn::Gt(far2, hn::Set(d, v_.inner)));
    return hn::IfThenElse(isOutside, outside, hn::Set(floats, 1.0f));
  }

  const Vignette v_;
  const int rowTerm_;
  int32_t thirds_[kPackedBytes * kLanes];  // i / 3
};

void shadeRowVector(const Vignette& vignette, int rowTerm, const Curves& curves, const int* src,
                    int* dst, int width) {
  const Shader shader(vignette, rowTerm);
  const auto* from = reinterpret_cast<const uint8_t*>(src);
  auto* to = reinterpret_cast<uint8_t*>(dst);
  const auto columns = static_cast<std::size_t>(width);
  for (std::size_t first = 0; first < columns; first += kStretch) {
    const std::size_t count = HWY_MIN(columns - first, kStretch);
    HWY_ALIGN uint8_t bytes[kPackedBytes * kStretch];
    const auto take = [&](std::size_t x, const uint8_t* ints)
                          HWY_ATTR { takeBytes(ints, bytes + kPackedBytes * x); };
    forEachBlock<kBlock>(count, take, Reads<kIntPixel>{from + kIntPixel * first});
    mapCurveRow(bytes, bytes, hwy::RoundUpTo(count, kBlock), curves);
    const auto shade = [&](std::size_t x, uint8_t* ints) HWY_ATTR {
      shader.block(static_cast<int>(first + x), bytes + kPackedBytes * x, ints);
    };
    forEachBlock<kBlock>(count, shade, Writes<kIntPixel>{to + kIntPixel * first});
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void shadeRow(const Vignette& vignette, int rowTerm, const Curves& curves, const int* src, int* dst,
              int width) {
  ALG_DISPATCH(shadeRowVector)(vignette, rowTerm, curves, src, dst, width);
}

}  // namespace alg
#endif
