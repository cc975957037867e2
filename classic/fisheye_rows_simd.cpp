// Vector twin of the fish-eye, compiled once per vector target.
//
// The stretch depends on the squared radius alone: it comes from a table of this picture's radii.
// Positions are worked out lane by lane, as byte offsets from four corners of the picture. Then
// pixels are collected four at a time, each with one byte too many, and turned round together:
//
//   loaded    a0 a1 a2 -  b0 b1 b2 -  c0 c1 c2 -  d0 d1 d2 -      in the upper half
//             -  a0 a1 a2 -  b0 b1 b2 -  c0 c1 c2 -  d0 d1 d2     in the lower half
//   stored    a2 a1 a0 b2 b1 b0 c2 c1 c0 d2 d1 d0 -  -  -  -      on the left, going right
//             -  -  -  -  d2 d1 d0 c2 c1 c0 b2 b1 b0 a2 a1 a0     on the right, going left
//
// Bytes stored too many fall on the next pixels of the run, which are written later.
#include <cstring>

#include "base/image_size.h"
#include "classic/fisheye_rows.h"
#include "classic/four_corner.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/fisheye_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& fisheyeVector = fisheyePlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Ints = hn::ScalableTag<int32_t>;
using IntVector = hn::Vec<Ints>;
using Bytes16 = hn::Full128<uint8_t>;

constexpr int kLanes = static_cast<int>(hn::MaxLanes(Ints()));
static_assert(kCornerRun % kLanes == 0);
constexpr int kTableEntries = 4097;

/// A run's sources, as offsets from four of the picture's pixels: to its first one and so on.
struct Sources {
  int32_t fromTopLeft[kCornerRun], fromTopRight[kCornerRun];
  int32_t fromBottomLeft[kCornerRun], fromBottomRight[kCornerRun];
};

class Fisheye {
 public:
  explicit Fisheye(const FisheyeMap& map) : map_(map), pitch_(kPackedBytes * map.width) {}

  /// False for pictures that need the plain walk: tiny ones, whose loads of four bytes could leave
  /// them, and those whose numbers need more than 32 bits.
  bool fillTable() {
    if (map_.width < 6 || map_.height < 3 || map_.width > kMaxSide || map_.height > kMaxSide ||
        map_.height / map_.width > kMaxTallness || int64_t{pitch_} * map_.height > INT32_MAX) {
      return false;
    }
    // The corner is farthest from the centre.
    const int x = map_.lengthX(map_.offsetX(-(map_.width >> 1)));
    const int y = map_.lengthY(map_.offsetY(-(map_.height >> 1)));
    const int farthest = (y * y + x * x) >> 12;
    if (farthest >= kTableEntries) {
      return false;
    }
    int all = 0;
    for (int i = 0; i <= farthest; ++i) {
      factors_[i] = stretch(i, map_.lens);
      all |= factors_[i];
    }
    return all >= 0 && all <= kMaxFactor;  // sources on the same side of the centre
  }

  void locate(const CornerRun& run, Sources& sources) const {
    const Ints d;
    const auto lanes = hn::Iota(d, 0);
    const int offsetY = map_.offsetY(run.dy);
    const int lengthY = map_.lengthY(offsetY);
    const auto offsetX = [&](int i) HWY_ATTR {
      return hn::ShiftRight<12>(
          hn::Mul(hn::Add(lanes, hn::Set(d, run.dx + i)), hn::Set(d, map_.stepX)));
    };
    HWY_ALIGN int32_t factors[kCornerRun];  // first the squared radii
    for (int i = 0; i < run.count; i += kLanes) {
      const auto length = hn::ShiftRight<12>(hn::Mul(offsetX(i), hn::Set(d, map_.lens.aspect)));
      const auto squared = hn::Add(hn::Mul(length, length), hn::Set(d, lengthY * lengthY));
      hn::Store(hn::ShiftRight<12>(squared), d, factors + i);
    }
    for (int i = 0; i < run.count; ++i) {
      factors[i] = factors_[factors[i]];
    }
    for (int i = 0; i < run.count; i += kLanes) {
      const auto factor = hn::Load(d, factors + i);
      const auto row =
          hn::Mul(positions(factor, hn::Set(d, offsetY), map_.height), hn::Set(d, pitch_));
      const auto column =
          hn::Mul(positions(factor, offsetX(i), map_.width), hn::Set(d, kPackedBytes));
      hn::StoreU(hn::Add(row, column), d, sources.fromTopLeft + i);
      hn::StoreU(hn::Sub(row, column), d, sources.fromTopRight + i);
      hn::StoreU(hn::Sub(column, row), d, sources.fromBottomLeft + i);
      hn::StoreU(hn::Neg(hn::Add(row, column)), d, sources.fromBottomRight + i);
    }
  }

 private:
  static constexpr int kMaxSide = 32767;
  static constexpr int kMaxTallness = 15;     // height / width
  static constexpr int kMaxFactor = 0x7FFFF;  // times an offset of 2048: 31 bits

  static IntVector positions(IntVector factor, IntVector offset, int size) {
    const Ints d;
    const auto place = hn::Add(hn::ShiftRight<12>(hn::Mul(factor, offset)), hn::Set(d, kOne / 2));
    return hn::ShiftRight<12>(hn::Mul(hn::Max(place, hn::Zero(d)), hn::Set(d, size)));
  }

  const FisheyeMap map_;
  const int pitch_;  // bytes of a row
  int32_t factors_[kTableEntries];
};

hn::Vec<Bytes16> loadFour(const uint8_t* base, const int32_t* offsets) {
#if ALG_IS_NEON()
  const auto word = [&](int i) { return reinterpret_cast<const uint32_t*>(base + offsets[i]); };
  uint32x4_t words = vld1q_dup_u32(word(0));
  words = vld1q_lane_u32(word(1), words, 1);
  words = vld1q_lane_u32(word(2), words, 2);
  words = vld1q_lane_u32(word(3), words, 3);
  return hn::Vec<Bytes16>(vreinterpretq_u8_u32(words));
#else
  const auto word = [&](int i) {
    int value;
    std::memcpy(&value, base + offsets[i], sizeof(value));
    return value;
  };
  return hn::Vec<Bytes16>{_mm_setr_epi32(word(0), word(1), word(2), word(3))};
#endif
}

/// Copies a run into one of its four images: from base + offsets to `to` and on, or to the left.
template <bool kLowerHalf, bool kLeftwards>
void copyRun(const uint8_t* base, const int32_t* offsets, uint8_t* to, int count,
             std::ptrdiff_t ahead) {
  // In each half of the picture the byte too many is on the inner side.
  constexpr int kFirst = kLowerHalf ? 1 : 0;
  HWY_ALIGN uint8_t from[16] = {};
  for (int i = 0; i < 4 * kPackedBytes; ++i) {
    const int pixel = i / kPackedBytes;
    const int byte = kFirst + 2 - i % kPackedBytes;
    from[kLeftwards ? 4 + i : i] =
        static_cast<uint8_t>(4 * (kLeftwards ? 3 - pixel : pixel) + byte);
  }
  const Bytes16 d;
  const auto turned = hn::Load(d, from);
  constexpr int kStep = kLeftwards ? -kPackedBytes : kPackedBytes;
  base -= kFirst;
  int i = 0;
  for (; i + 6 <= count; i += 4, offsets += 4, to += 4 * kStep) {  // 4 bytes too many
    // The curves of source pixels cross many rows: the prefetcher cannot follow. What the next rows
    // will need is asked for here; an address outside the picture does no harm.
    const auto needed = reinterpret_cast<std::intptr_t>(base) + offsets[0] + ahead;
    __builtin_prefetch(reinterpret_cast<const void*>(needed));
    const auto pixels = hn::TableLookupBytes(loadFour(base, offsets), turned);
    hn::StoreU(pixels, d, to - (kLeftwards ? 4 + 3 * kPackedBytes : 0));
  }
  base += kFirst;
  for (; i < count; ++i, ++offsets, to += kStep) {
    const uint8_t* pixel = base + offsets[0];
    to[0] = pixel[2];
    to[1] = pixel[1];
    to[2] = pixel[0];
  }
}

void fisheyeVector(const FisheyeMap& map, const uint8_t* src, uint8_t* dst) {
  Fisheye fisheye(map);
  if (!fisheye.fillTable()) {
    return fisheyePlain(map, src, dst);
  }
  const Mirrors mirrors(map.width, map.height);
  const Corners ends = mirrors.of(0, 0);
  constexpr std::ptrdiff_t kRowsAhead = 6;
  const std::ptrdiff_t ahead = kRowsAhead * kPackedBytes * map.width;
  Sources sources;
  walkCornerRuns(map.width, map.height, [&](const CornerRun& run) HWY_ATTR {
    fisheye.locate(run, sources);
    const Corners to = mirrors.of(run.y, run.x);
    const auto copy = [&](auto copyTo, int corner, const int32_t* from, std::ptrdiff_t rows) {
      const auto at = static_cast<std::size_t>(corner);
      copyTo(src + ends[at], from, dst + to[at], run.count, rows);
    };
    copy(copyRun<false, false>, 0, sources.fromTopLeft, ahead);
    copy(copyRun<true, false>, 1, sources.fromBottomLeft, -ahead);
    copy(copyRun<false, true>, 2, sources.fromTopRight, ahead);
    copy(copyRun<true, true>, 3, sources.fromBottomRight, -ahead);
  });
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void fisheye(const FisheyeMap& map, const uint8_t* src, uint8_t* dst) {
  ALG_DISPATCH(fisheyeVector)(map, src, dst);
}

}  // namespace alg
#endif
