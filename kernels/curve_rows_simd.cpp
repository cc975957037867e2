// Vector twin of the curve mapper, compiled once per vector target.
//
// A lookup in 16 entries takes the low half of an index and gives 0 when its bit 7 is set. The 256
// entries of a curve are four groups of four such rows. Within a group, row 3 stands as it is and
// each other row as its difference (exclusive or) from the next:
//
//     w = v mod 64             row3[w] ^ row2[w + 0x50] ^ row1[w + 0x60] ^ row0[w + 0x70]
//     bit 7 set, row silent:             w >= 48          w >= 32          w >= 16
//
// so that the rows that speak make up the entry. Bits 6 and 7 of v choose among the groups.
//
// AVX-512 looks 128 entries up at once.
//
// NEON looks 64 entries up at once and gives 0 outside. The tables of a curve fill half of its
// registers, so that it maps one channel of a stretch of pixels at a time.
#define ALG_ALSO_AVX512
#include <algorithm>

#include "base/image_size.h"
#include "kernels/curve_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/curve_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"
#include "kernels/packed_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& mapCurveRowVector = mapCurveRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using planes::Bytes;
using planes::ByteVector;
using planes::Planes;

// Mapped planes, channel by channel, crossed.
HWY_INLINE Planes cross(ByteVector from0, ByteVector from1, ByteVector from2) {
  return {{planes::rehome<2, 0>(from2), from1, planes::rehome<0, 2>(from0)}};
}

struct StepVectors {
  explicit StepVectors(const ByteSteps& steps)
      : flip(hn::Set(Bytes(), steps.flip)),
        up(hn::Set(Bytes(), steps.up)),
        down(hn::Set(Bytes(), steps.down)) {}

  HWY_INLINE ByteVector operator()(ByteVector v) const {
    return hn::SaturatedSub(hn::SaturatedAdd(hn::Xor(v, flip), up), down);
  }

  ByteVector flip, up, down;
};

// Curves that are steps on bytes need no lookup.
void mapSteps(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  const StepVectors s0(curves.steps[0]), s1(curves.steps[1]), s2(curves.steps[2]);
  planes::mapPixels(src, dst, pixels, [&](const Planes& p) HWY_ATTR {
    return cross(s0(p.of[0]), s1(p.of[1]), s2(p.of[2]));
  });
}

#if ALG_IS_NEON()

constexpr std::size_t kStretch = 512;  // pixels

// body(i, lookUp) for each vector of pixels, i being its first one; lookUp maps a vector.
template <class Body>
HWY_INLINE void forEachVector(const uint8_t* curve, std::size_t pixels, Body body) {
  // Four variables, so that they stay in registers.
  const uint8x16x4_t q0 = vld1q_u8_x4(curve);
  const uint8x16x4_t q1 = vld1q_u8_x4(curve + 64);
  const uint8x16x4_t q2 = vld1q_u8_x4(curve + 128);
  const uint8x16x4_t q3 = vld1q_u8_x4(curve + 192);
  const auto lookUp = [&](uint8x16_t v) HWY_ATTR {
    const uint8x16_t r0 = vqtbl4q_u8(q0, v);
    const uint8x16_t r1 = vqtbl4q_u8(q1, veorq_u8(v, vdupq_n_u8(64)));
    const uint8x16_t r2 = vqtbl4q_u8(q2, veorq_u8(v, vdupq_n_u8(128)));
    const uint8x16_t r3 = vqtbl4q_u8(q3, veorq_u8(v, vdupq_n_u8(192)));
    return vorrq_u8(vorrq_u8(r0, r1), vorrq_u8(r2, r3));
  };
  for (std::size_t i = 0; i < pixels; i += planes::kLanes) {
    body(i, lookUp);
  }
}

// At most kStretch pixels, in whole vectors. The source is read in the first round and dst written
// in the last.
void mapStretch(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  uint8_t plane[kPackedBytes][kStretch];
  forEachVector(curves.curve[0], pixels, [&](std::size_t i, const auto& lookUp) HWY_ATTR {
    const uint8x16x3_t p = vld3q_u8(src + kPackedBytes * i);
    vst1q_u8(plane[0] + i, lookUp(p.val[0]));
    vst1q_u8(plane[1] + i, p.val[1]);
    vst1q_u8(plane[2] + i, p.val[2]);
  });
  forEachVector(curves.curve[1], pixels, [&](std::size_t i, const auto& lookUp) HWY_ATTR {
    vst1q_u8(plane[1] + i, lookUp(vld1q_u8(plane[1] + i)));
  });
  forEachVector(curves.curve[2], pixels, [&](std::size_t i, const auto& lookUp) HWY_ATTR {
    const uint8x16_t last = lookUp(vld1q_u8(plane[2] + i));
    const uint8x16x3_t crossed{last, vld1q_u8(plane[1] + i), vld1q_u8(plane[0] + i)};
    vst3q_u8(dst + kPackedBytes * i, crossed);
  });
}

void mapTables(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  const std::size_t tail = pixels % planes::kLanes;
  for (std::size_t rest = pixels - tail; rest > 0;) {
    const std::size_t stretch = std::min(rest, kStretch);
    mapStretch(src, dst, stretch, curves);
    src += kPackedBytes * stretch;
    dst += kPackedBytes * stretch;
    rest -= stretch;
  }
  mapCurveRowPlain(src, dst, tail, curves);
}

#elif ALG_IS_AVX512()

void mapTables(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  const ops::ByteTable map0(curves.curve[0]), map1(curves.curve[1]), map2(curves.curve[2]);
  planes::mapPixels(src, dst, pixels, [&](const Planes& p) HWY_ATTR {
    return cross(map0(p.of[0]), map1(p.of[1]), map2(p.of[2]));
  });
}

#else

HWY_INLINE ByteVector lookUpGroup(const uint8_t* rows, ByteVector w, ByteVector upTo48,
                                  ByteVector upTo32, ByteVector upTo16) {
  const Bytes d;
  const auto row = [&](int k, ByteVector index) HWY_ATTR {
    return hn::TableLookupBytesOr0(hn::LoadDup128(d, rows + 16 * k), index);
  };
  return hn::Xor(hn::Xor(row(3, w), row(2, upTo48)), hn::Xor(row(1, upTo32), row(0, upTo16)));
}

HWY_INLINE ByteVector lookUp(const uint8_t* rows, ByteVector v) {
  const Bytes d;
  const ByteVector w = hn::And(v, hn::Set(d, 0x3F));
  const ByteVector upTo48 = hn::Add(w, hn::Set(d, 0x50));
  const ByteVector upTo32 = hn::Add(w, hn::Set(d, 0x60));
  const ByteVector upTo16 = hn::Add(w, hn::Set(d, 0x70));
  const auto group = [&](int k)
                         HWY_ATTR { return lookUpGroup(rows + 64 * k, w, upTo48, upTo32, upTo16); };
  const auto bit6 = hn::MaskFromVec(hn::Add(v, v));  // a mask is bit 7 of each lane
  const auto bit7 = hn::MaskFromVec(v);
  return hn::IfThenElse(bit7, hn::IfThenElse(bit6, group(3), group(2)),
                        hn::IfThenElse(bit6, group(1), group(0)));
}

void mapTables(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  planes::mapPixels(src, dst, pixels, [&](const Planes& p) HWY_ATTR {
    return cross(lookUp(curves.rows[0], p.of[0]), lookUp(curves.rows[1], p.of[1]),
                 lookUp(curves.rows[2], p.of[2]));
  });
}

#endif

void mapCurveRowVector(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  (curves.allSteps ? mapSteps : mapTables)(src, dst, pixels, curves);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void mapCurveRow(const uint8_t* src, uint8_t* dst, std::size_t pixels, const Curves& curves) {
  ALG_DISPATCH(mapCurveRowVector)(src, dst, pixels, curves);
}

}  // namespace alg
#endif
