// Lights pixels whose gains are known, with their bytes 0 and 2 exchanged; included by the fill
// light's kernel file, once per vector target. NEON does it plane by plane, AVX2 five pixels a
// step:
//
//   loaded    B G R  B G R  B G R  B G R  B G R  -
//   turned    R G B  R G B  R G B  R G B  R G B  -   + gains, limited to 255
//
// The byte stored too many belongs to the next pixel, which is written later.
#if defined(ALG_LIGHT_UP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_LIGHT_UP_INL_H_
#undef ALG_LIGHT_UP_INL_H_
#else
#define ALG_LIGHT_UP_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "hwy/highway.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if ALG_HAS_VECTORS()

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Bytes16 = hn::Full128<uint8_t>;

constexpr int kBlock = static_cast<int>(hn::MaxLanes(Bytes()));  // columns a step

/// Lights pixels one by one, for lightUp.
HWY_INLINE void lightEach(const uint8_t* src, uint8_t* dst, std::size_t bytes, const uint8_t* gains,
                          std::size_t step) {
  for (std::size_t at = 0; at < bytes; at += kPackedBytes, gains += step / 5) {
    for (std::size_t k = 0; k < kPackedBytes; ++k) {
      dst[at + k] = static_cast<uint8_t>(std::min(src[at + 2 - k] + gains[k], 255));
    }
  }
}

// lightUp lights `bytes` bytes and perhaps some more up to `room`, to be lit again. The gains of
// five pixels are `step` bytes after those of the five before: 15, or 0 to take the same ones
// again.
#if ALG_IS_NEON()

/// gainsAt(x) are those of the 16 pixels from byte x on.
template <class GainsAt>
HWY_INLINE void lightPlanes(const uint8_t* src, uint8_t* dst, std::size_t bytes, std::size_t room,
                            GainsAt gainsAt) {
  constexpr std::size_t kStep = std::size_t{kPackedBytes} * kBlock;
  const auto lit = [&](std::size_t x) HWY_ATTR {
    const uint8x16x3_t p = vld3q_u8(src + x), g = gainsAt(x);
    return uint8x16x3_t{vqaddq_u8(p.val[2], g.val[0]), vqaddq_u8(p.val[1], g.val[1]),
                        vqaddq_u8(p.val[0], g.val[2])};
  };
  std::size_t x = 0;
  // Two steps are read before either is written, so that cores which take instructions in order
  // don't wait for each.
  for (; x + kStep < bytes && x + 2 * kStep <= room; x += 2 * kStep) {
    const uint8x16x3_t first = lit(x), second = lit(x + kStep);
    vst3q_u8(dst + x, first);
    vst3q_u8(dst + x + kStep, second);
  }
  for (; x < bytes; x += kStep) {
    const std::size_t from = HWY_MIN(x, room - kStep);
    vst3q_u8(dst + from, lit(from));
  }
}

HWY_NOINLINE void lightUp(const uint8_t* src, uint8_t* dst, std::size_t bytes, std::size_t room,
                          const uint8_t* gains, std::size_t step) {
  if (room < std::size_t{kPackedBytes} * kBlock) {
    lightEach(src, dst, bytes, gains, step);
  } else if (step == 0) {
    const uint8x16x3_t even{vdupq_n_u8(gains[0]), vdupq_n_u8(gains[1]), vdupq_n_u8(gains[2])};
    lightPlanes(src, dst, bytes, room, [&](std::size_t /*x*/) HWY_ATTR { return even; });
  } else {
    lightPlanes(src, dst, bytes, room, [&](std::size_t x) HWY_ATTR { return vld3q_u8(gains + x); });
  }
}

#else

/// Lights the 5 pixels at each of kSteps places, 15 bytes apart. All are read before any is
/// written.
template <std::size_t kSteps>
HWY_INLINE void lightSteps(const uint8_t* src, uint8_t* dst, const uint8_t* gains,
                           std::size_t step) {
  HWY_ALIGN static constexpr uint8_t kTurned[16] = {2, 1,  0,  5, 4,  3,  8,  7,
                                                    6, 11, 10, 9, 14, 13, 12, 15};
  const Bytes16 d;
  const auto turned = hn::Load(d, kTurned);
  const auto lit = [&](std::size_t i) HWY_ATTR {
    const auto pixels = hn::TableLookupBytes(hn::LoadU(d, src + 15 * i), turned);
    return hn::SaturatedAdd(pixels, hn::LoadU(d, gains + step * i));
  };
  if constexpr (kSteps == 1) {
    hn::StoreU(lit(0), d, dst);
  } else {
    const auto first = lit(0), second = lit(1), third = lit(2), fourth = lit(3);
    hn::StoreU(first, d, dst);
    hn::StoreU(second, d, dst + 15);
    hn::StoreU(third, d, dst + 30);
    hn::StoreU(fourth, d, dst + 45);
  }
}

HWY_NOINLINE void lightUp(const uint8_t* src, uint8_t* dst, std::size_t bytes, std::size_t room,
                          const uint8_t* gains, std::size_t step) {
  constexpr std::size_t kUnroll = 4;
  const std::size_t within = room < 18 ? 0 : (room - 18) / 15 + 1;
  const std::size_t steps = HWY_MIN((bytes + 14) / 15, within);
  std::size_t i = 0;
  for (; i + kUnroll <= steps; i += kUnroll) {
    lightSteps<kUnroll>(src + 15 * i, dst + 15 * i, gains + step * i, step);
  }
  for (; i < steps; ++i) {
    lightSteps<1>(src + 15 * i, dst + 15 * i, gains + step * i, step);
  }
  const std::size_t lit = 15 * steps;
  lightEach(src + lit, dst + lit, lit < bytes ? bytes - lit : 0, gains + step * steps, step);
}

#endif

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_LIGHT_UP_INL_H_
