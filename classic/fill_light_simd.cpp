// Vector twin of the fill light, compiled once per vector target.
//
// Gains are worked out for a run's columns once, most of it in 16-bit lanes, and kept as bytes in
// the order of a destination row, for the run and, back to front, for its images on the right. All
// that is left to do for a pixel is to turn it round and to add. Five pixels a step:
//
//   loaded    B G R  B G R  B G R  B G R  B G R  -
//   turned    R G B  R G B  R G B  R G B  R G B  -   + gains, limited to 255
//
// The byte stored too many belongs to the run's next pixel, which is written later.
#include "base/image_size.h"
#include "classic/four_corner.h"
#include "classic/light_gains.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/fill_light_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors the definition is the fastest there is.
void fillLightRows(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  fillLightPlain(light, src, dst);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using HalfBytes = hn::Half<Bytes>;
using Shorts = hn::Repartition<int16_t, Bytes>;
using Unsigned = hn::Repartition<uint16_t, Bytes>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Floats = hn::Repartition<float, Bytes>;
using Bytes16 = hn::Full128<uint8_t>;
using ShortVector = hn::Vec<Shorts>;
using UnsignedVector = hn::Vec<Unsigned>;
using IntVector = hn::Vec<Ints>;

constexpr int kBlock = static_cast<int>(hn::MaxLanes(Bytes()));  // columns a step
constexpr int kShortLanes = kBlock / 2;
constexpr int kIntLanes = kBlock / 4;

/// (a x b) >> 15 of values below 1.0.
UnsignedVector product(UnsignedVector a, UnsignedVector b) {
#if HWY_TARGET == HWY_NEON
  return UnsignedVector(vreinterpretq_u16_s16(
      vqdmulhq_s16(vreinterpretq_s16_u16(a.raw), vreinterpretq_s16_u16(b.raw))));
#else
  return hn::MulHigh(hn::Add(a, a), b);
#endif
}

/// (v x factor) >> 15 for either sign and factors below 0.5.
ShortVector scaled(ShortVector v, int factor) {
#if HWY_TARGET == HWY_NEON
  return ShortVector(vqdmulhq_n_s16(v.raw, static_cast<int16_t>(factor)));
#else
  return hn::MulHigh(v, hn::Set(Shorts(), static_cast<int16_t>(2 * factor)));
#endif
}

UnsignedVector falloffs(UnsignedVector d) {
  const auto times = [](UnsignedVector v, int factor) HWY_ATTR {
    return product(v, hn::Set(Unsigned(), static_cast<uint16_t>(factor)));
  };
  const UnsignedVector d2 = product(d, d);
  const UnsignedVector d4 = product(d2, d2);
  const UnsignedVector rising =
      hn::Add(hn::Add(times(d, 23837), hn::Set(Unsigned(), uint16_t{3401})),
              hn::Add(times(product(d2, d), 18134), times(product(d, d4), 1837)));
  const UnsignedVector sum = hn::Sub(rising, hn::Add(times(d2, 22035), times(d4, 8790)));
  return hn::Add(sum, sum);
}

hn::Vec<Bytes> backwards(hn::Vec<Bytes> v) {
  const Unsigned d;
  const UnsignedVector pairs = hn::Reverse(d, hn::BitCast(d, v));
  return hn::BitCast(Bytes(), hn::Or(hn::ShiftLeft<8>(pairs), hn::ShiftRight<8>(pairs)));
}

class LightRow {
 public:
  explicit LightRow(const FillLight& light) : light_(light) {}

  /// Whether all weights are at most half, so that gains are bytes and their terms 16 bits wide.
  /// All radii from 0.3 to 100 or more are like that.
  bool fits() const {
    const int64_t least = int64_t{light_.full} + (light_.full >> 2);
    const int64_t most = int64_t{std::max(light_.full, 0x8000)} + (light_.full >> 2);
    return light_.width <= kMaxSide && light_.height <= kMaxSide && light_.full >= 0 &&
           light_.inverse >= 0 && most * light_.inverse <= INT32_MAX &&
           32767 - ((least * light_.inverse) >> 15) <= 0x4000;
  }

  void workOut(const CornerRun& run) {
    const Bytes d;
    for (int i = 0; i < run.count; i += kBlock) {
      hn::Vec<HalfBytes> red[2], green[2], blue[2];
      for (int half = 0; half < 2; ++half) {
        gainsOf(run.dy, run.dx + i + half * kShortLanes, red[half], green[half], blue[half]);
      }
      const auto r = hn::Combine(d, red[1], red[0]);
      const auto g = hn::Combine(d, green[1], green[0]);
      const auto b = hn::Combine(d, blue[1], blue[0]);
      hn::StoreInterleaved3(r, g, b, d, left_ + kPackedBytes * i);
      hn::StoreInterleaved3(backwards(r), backwards(g), backwards(b), d,
                            right_ + kPackedBytes * (run.count - i));
    }
    // A distance of 1.0, in a corner, has 16 bits.
    if (light_.distance(run.dy, run.dx) > 0x7FFF) {
      const Gains gains = light_.gains(run.dy, run.dx);
      for (uint8_t* to : {left_, right_ + kPackedBytes * (kBlock + run.count - 1)}) {
        to[0] = static_cast<uint8_t>(gains.red);
        to[1] = static_cast<uint8_t>(gains.green);
        to[2] = static_cast<uint8_t>(gains.blue);
      }
    }
  }

  /// In the order of columns.
  const uint8_t* left() const { return left_; }
  const uint8_t* right() const { return right_ + kPackedBytes * kBlock; }

 private:
  static constexpr int kMaxSide = 0xFFFF;  // squared half diagonals have 31 bits

  IntVector distances(int dy, int dx) const {
    const Ints d;
    const auto x = hn::Add(iota_, hn::Set(d, dx));
    const auto squared = hn::Add(hn::Mul(x, x), hn::Set(d, dy * dy));
    return hn::ShiftRight<15>(hn::Mul(squared, hn::Set(d, light_.norm)));
  }

  /// Weights, and what the light takes from the colours: (98301 - 8 w) x 0.33333, truncated. In
  /// single precision that was compared for all weights up to 24661: it is the same.
  void weigh(IntVector falloff, IntVector& weight, IntVector& dimmed) const {
    const Ints d;
    const Floats floats;
    const auto reach =
        hn::Add(hn::Max(falloff, hn::Set(d, light_.full)), hn::Set(d, light_.full >> 2));
    const auto taken = hn::ShiftRight<15>(hn::Mul(reach, hn::Set(d, light_.inverse)));
    weight = hn::Max(hn::Sub(hn::Set(d, 32767), taken), hn::Zero(d));
    const auto scale = hn::Sub(hn::Set(d, 98301), hn::ShiftLeft<3>(weight));
    dimmed = hn::ConvertTo(d, hn::Mul(hn::ConvertTo(floats, scale), hn::Set(floats, 0.33333f)));
  }

  void gainsOf(int dy, int dx, hn::Vec<HalfBytes>& red, hn::Vec<HalfBytes>& green,
               hn::Vec<HalfBytes>& blue) const {
    const Ints ints;
    const Shorts shorts;
    const Unsigned d;
    const hn::Half<Unsigned> half;
    const HalfBytes bytes;
    const auto join = [&](IntVector low, IntVector high) HWY_ATTR {  // the lower halves of lanes
      return hn::ConcatEven(d, hn::BitCast(d, high), hn::BitCast(d, low));
    };
    const UnsignedVector distance = join(distances(dy, dx), distances(dy, dx + kIntLanes));
    const UnsignedVector falloff = falloffs(distance);
    IntVector weight[2], dimmed[2];
    weigh(hn::PromoteTo(ints, hn::LowerHalf(half, falloff)), weight[0], dimmed[0]);
    weigh(hn::PromoteTo(ints, hn::UpperHalf(half, falloff)), weight[1], dimmed[1]);
    const auto w = hn::BitCast(shorts, join(weight[0], weight[1]));
    const auto k = hn::BitCast(shorts, join(dimmed[0], dimmed[1]));
    red = hn::DemoteTo(bytes, hn::Add(scaled(k, 122), scaled(w, 255)));
    green = hn::DemoteTo(bytes, hn::Add(scaled(k, 74), scaled(w, 4 * 33)));
    blue = hn::DemoteTo(bytes, hn::Add(scaled(k, 97), scaled(w, 97)));
  }

  const FillLight light_;
  const IntVector iota_ = hn::Iota(Ints(), 0);
  uint8_t left_[kPackedBytes * (kCornerRun + kBlock)];
  uint8_t right_[kPackedBytes * (kCornerRun + kBlock)];  // a block of room, then the gains
};

void lightUp(const uint8_t* src, uint8_t* dst, const uint8_t* gains, int count) {
  HWY_ALIGN static constexpr uint8_t kTurned[16] = {2, 1,  0,  5, 4,  3,  8,  7,
                                                    6, 11, 10, 9, 14, 13, 12, 15};
  const Bytes16 d;
  const auto turned = hn::Load(d, kTurned);
  int i = 0;
  for (; i + 6 <= count; i += 5, src += 15, dst += 15, gains += 15) {
    const auto pixels = hn::TableLookupBytes(hn::LoadU(d, src), turned);
    hn::StoreU(hn::SaturatedAdd(pixels, hn::LoadU(d, gains)), d, dst);
  }
  for (; i < count; ++i, src += kPackedBytes, dst += kPackedBytes, gains += kPackedBytes) {
    for (int k = 0; k < kPackedBytes; ++k) {
      dst[k] = static_cast<uint8_t>(std::min(src[2 - k] + gains[k], 255));
    }
  }
}

void fillLightRows(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  LightRow row(light);
  if (!row.fits()) {
    return fillLightPlain(light, src, dst);
  }
  const Mirrors mirrors(light.width, light.height);
  walkCornerRuns(light.width, light.height, [&](const CornerRun& run) HWY_ATTR {
    row.workOut(run);
    const Corners left = mirrors.of(run.y, run.x);
    const Corners right = mirrors.of(run.y, run.x + run.count - 1);
    for (const std::size_t at : {left[0], left[1]}) {
      lightUp(src + at, dst + at, row.left(), run.count);
    }
    for (const std::size_t at : {right[2], right[3]}) {
      lightUp(src + at, dst + at, row.right(), run.count);
    }
  });
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

HWY_EXPORT(fillLightRows);

void fillLightSimd(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  HWY_DYNAMIC_DISPATCH(fillLightRows)(light, src, dst);
}

}  // namespace alg
#endif
