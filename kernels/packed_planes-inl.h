// Packed 3-byte pixels as three vectors, one per channel; included by kernel files, once per vector
// target.
//
// Where three-way loads and stores are slow, three whole vectors of bytes are split by blends
// alone, which leaves each channel's bytes where they were: in a vector of L lanes (L = 16 or 32),
// byte c of pixel p lies in lane (3p + c) mod L, the home order of channel c:
//
//     bytes    0 1 2 0 1 2 0 1 ... | 1 2 0 1 2 0 ... | 2 0 1 2 ...       (L = 32: 0 | 2 | 1)
//     plane 0  lanes 0, 3, 6, ... from the first vector, the others from the second and third
//
// The home orders differ by rotations only. A kernel that treats channels one by one rotates just
// what changes its channel; one that mixes channels first rotates all to the same order.
#if defined(ALG_PACKED_PLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_PACKED_PLANES_INL_H_
#undef ALG_PACKED_PLANES_INL_H_
#else
#define ALG_PACKED_PLANES_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "base/streamed.h"
#include "hwy/cache_control.h"
#include "hwy/highway.h"
#include "kernels/overlap.h"
#include "kernels/row_blocks-inl.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_HAS_VECTORS()

namespace planes {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using ByteVector = hn::Vec<Bytes>;

constexpr std::size_t kLanes = hn::MaxLanes(Bytes());  // pixels a step

struct Planes {
  ByteVector of[kPackedBytes];  // [c] in the home order of channel c
};

#if ALG_IS_NEON()

// All home orders are the same.
template <int kFrom, int kTo>
HWY_INLINE ByteVector rehome(ByteVector v) {
  return v;
}

HWY_INLINE Planes load(const uint8_t* from) {
  ByteVector v0, v1, v2;
  hn::LoadInterleaved3(Bytes(), from, v0, v1, v2);
  return {{v0, v1, v2}};
}

HWY_INLINE void store(const Planes& p, uint8_t* to) {
  hn::StoreInterleaved3(p.of[0], p.of[1], p.of[2], Bytes(), to);
}

#else

// Lane i takes lane i + kBy, round the vector's end; kBy = -2..2.
template <int kBy>
HWY_INLINE ByteVector rotateDown(ByteVector v) {
  const Bytes d;
#if ALG_IS_AVX512()
  const ByteVector order = hn::Add(hn::Iota(d, 0), hn::Set(d, kBy & 0xFF));
  return kBy == 0 ? v : ByteVector{_mm512_permutexvar_epi8(order.raw, v.raw)};
#else
  static_assert(kLanes == 32, "two blocks of 16");
  const ByteVector swapped = hn::SwapAdjacentBlocks(v);
  if constexpr (kBy < 0) {
    return hn::CombineShiftRightBytes<16 + kBy>(d, v, swapped);
  } else if constexpr (kBy > 0) {
    return hn::CombineShiftRightBytes<kBy>(d, swapped, v);
  } else {
    return v;
  }
#endif
}

// From the home order of one channel to that of another.
template <int kFrom, int kTo>
HWY_INLINE ByteVector rehome(ByteVector v) {
  return rotateDown<kFrom - kTo>(v);
}

// a in the lanes i with i % 3 = 0, b in those with 1, c in those with 2.
HWY_INLINE ByteVector choose(ByteVector a, ByteVector b, ByteVector c) {
#if ALG_IS_AVX512()
  const __m512i ab = _mm512_mask_blend_epi8(0x2492492492492492, a.raw, b.raw);
  return ByteVector{_mm512_mask_blend_epi8(0x4924924924924924, ab, c.raw)};
#else
  alignas(32) static constexpr uint8_t kEveryThird[kLanes + 2] = {
      255, 0,   0, 255, 0,   0, 255, 0,   0, 255, 0,   0, 255, 0,   0, 255, 0,
      0,   255, 0, 0,   255, 0, 0,   255, 0, 0,   255, 0, 0,   255, 0, 0,   255};
  const Bytes d;
  const auto first = hn::MaskFromVec(hn::Load(d, kEveryThird));
  const auto third = hn::MaskFromVec(hn::LoadU(d, kEveryThird + 1));
  return hn::IfThenElse(first, a, hn::IfThenElse(third, c, b));
#endif
}

// Vector k begins with byte kLanes k % 3 of a pixel: 0, 2, 1 of 32 lanes, 0, 1, 2 of 64.
constexpr std::size_t kSecond = kLanes * (kLanes % 3 == 2 ? 1 : 2);  // where byte 2 begins one
constexpr std::size_t kThird = 3 * kLanes - kSecond;

HWY_INLINE Planes load(const uint8_t* from) {
  const Bytes d;
  const ByteVector v0 = hn::LoadU(d, from);
  const ByteVector v1 = hn::LoadU(d, from + kSecond);
  const ByteVector v2 = hn::LoadU(d, from + kThird);
  return {{choose(v0, v1, v2), choose(v2, v0, v1), choose(v1, v2, v0)}};
}

HWY_INLINE void store(const Planes& p, uint8_t* to) {
  const Bytes d;
  hn::StoreU(choose(p.of[0], p.of[1], p.of[2]), d, to);
  hn::StoreU(choose(p.of[2], p.of[0], p.of[1]), d, to + kSecond);
  hn::StoreU(choose(p.of[1], p.of[2], p.of[0]), d, to + kThird);
}

// Past the caches, to whole vectors.
HWY_INLINE void stream(const Planes& p, uint8_t* to) {
  const Bytes d;
  hn::Stream(choose(p.of[0], p.of[1], p.of[2]), d, to);
  hn::Stream(choose(p.of[2], p.of[0], p.of[1]), d, to + kSecond);
  hn::Stream(choose(p.of[1], p.of[2], p.of[0]), d, to + kThird);
}

#endif

// Planes in the order of pixels, which kernels of neighbours need.
#if ALG_IS_AVX512()

// The home of each pixel's byte 0, and the pixel whose byte 0 is at home in each lane; of byte c
// that many lanes further up.
struct Orders {
  constexpr Orders() {
    for (std::size_t i = 0; i < kLanes; ++i) {
      home[i] = static_cast<uint8_t>(kPackedBytes * i % kLanes);
      pixel[home[i]] = static_cast<uint8_t>(i);
    }
  }
  alignas(64) uint8_t home[kLanes] = {};
  alignas(64) uint8_t pixel[kLanes] = {};
};
inline constexpr Orders kOrders;

// From the home order of channel kChannel to that of pixels.
template <int kChannel>
HWY_INLINE ByteVector ordered(ByteVector v) {
  const Bytes d;
  const ByteVector from = hn::Add(hn::Load(d, kOrders.home), hn::Set(d, kChannel));
  return ByteVector{_mm512_permutexvar_epi8(from.raw, v.raw)};
}

template <int kChannel>
HWY_INLINE ByteVector unordered(ByteVector v) {
  const ByteVector placed{_mm512_permutexvar_epi8(hn::Load(Bytes(), kOrders.pixel).raw, v.raw)};
  return rotateDown<-kChannel>(placed);
}

HWY_INLINE Planes loadOrdered(const uint8_t* from) {
  const Planes p = load(from);
  return {{ordered<0>(p.of[0]), ordered<1>(p.of[1]), ordered<2>(p.of[2])}};
}

HWY_INLINE void storeOrdered(ByteVector v0, ByteVector v1, ByteVector v2, uint8_t* to) {
  store({{unordered<0>(v0), unordered<1>(v1), unordered<2>(v2)}}, to);
}

#else

HWY_INLINE Planes loadOrdered(const uint8_t* from) {
  ByteVector v0, v1, v2;
  hn::LoadInterleaved3(Bytes(), from, v0, v1, v2);
  return {{v0, v1, v2}};
}

HWY_INLINE void storeOrdered(ByteVector v0, ByteVector v1, ByteVector v2, uint8_t* to) {
  hn::StoreInterleaved3(v0, v1, v2, Bytes(), to);
}

#endif

// dst = map(planes of src), a vector of pixels at a time. On x86 large images are fetched ahead,
// and results go past the caches where that pays (base/streamed.h), unless they overlap the source.
template <class Map>
HWY_INLINE void mapPixels(const uint8_t* src, uint8_t* dst, std::size_t pixels, Map map) {
  const Reads<kPackedBytes> from{src};
  const Writes<kPackedBytes> to{dst};
#if ALG_IS_NEON()
  const auto mapBlock = [&](std::size_t /*x*/, const uint8_t* in, uint8_t* out)
                            HWY_ATTR { store(map(load(in)), out); };
  forEachBlock<kLanes>(pixels, mapBlock, from, to);
#else
  constexpr std::size_t kLarge = std::size_t{1} << 20;  // for a second-level cache
  const std::size_t bytes = kPackedBytes * pixels;
  const bool large = bytes >= kLarge;
  const bool streams = large && !overlap(src, bytes, dst, bytes) && isStreamed(dst, bytes);
  const auto mapBlock = [&](std::size_t /*x*/, const uint8_t* in, uint8_t* out) HWY_ATTR {
    if (large) {
      fetchPageAhead<kPackedBytes * kLanes>(in);
    }
    const Planes mapped = map(load(in));
    if (streams && reinterpret_cast<std::uintptr_t>(out) % kLanes == 0) {
      stream(mapped, out);
      return;
    }
    if (large) {
      fetchPageAhead<kPackedBytes * kLanes, true>(out);
    }
    store(mapped, out);
  };
  // The second block begins a vector's length in memory, as all later ones do then.
  constexpr std::size_t kLine = 64, kInverse = 43;
  static_assert(kPackedBytes * kInverse % kLine == 1);
  const std::size_t before =
      (0 - reinterpret_cast<std::uintptr_t>(dst)) * kInverse % kLine % kLanes;
  std::size_t x = 0;
  for (std::size_t step = streams && before != 0 ? before : kLanes; pixels - x >= kLanes;
       x += step, step = kLanes) {
    mapBlock(x, from.at(x), to.at(x));
  }
  finishRows<kLanes>(x, pixels, mapBlock, from, to);
  if (streams) {
    hwy::FlushStream();
  }
#endif
}

}  // namespace planes

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_PACKED_PLANES_INL_H_
