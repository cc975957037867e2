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
#include <array>

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

static_assert(falloff(0x7FFF) == falloff(0x8000));

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

// Ints to shorts and shorts to bytes, in the order of instructions: on x86 each half of a vector is
// joined for itself, which the halves of falloffs undo for ints; bytes are put in order.
ShortVector join(IntVector low, IntVector high) {
#if HWY_TARGET == HWY_NEON
  return ShortVector(vcombine_s16(vqmovn_s32(low.raw), vqmovn_s32(high.raw)));
#else
  return ShortVector{_mm256_packs_epi32(low.raw, high.raw)};
#endif
}

hn::Vec<Bytes> narrow(ShortVector low, ShortVector high) {
#if HWY_TARGET == HWY_NEON
  return hn::Vec<Bytes>(vcombine_u8(vqmovun_s16(low.raw), vqmovun_s16(high.raw)));
#else
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  return hn::Vec<Bytes>{_mm256_permutevar8x32_epi32(_mm256_packus_epi16(low.raw, high.raw), order)};
#endif
}

struct ShortGains {
  ShortVector red, green, blue;
};

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

  void workOut(const CornerRun& run, const std::array<const uint8_t*, 8>& soon) {
    const Bytes d;
    for (int i = 0; i < run.count; i += kBlock) {
      // Meanwhile memory has time to bring the pixels.
      for (const uint8_t* pixels : soon) {
        __builtin_prefetch(pixels + kPackedBytes * i);
        __builtin_prefetch(pixels + kPackedBytes * i + 48);
      }
      const ShortGains low = gainsOf(run.dy, run.dx + i);
      const ShortGains high = gainsOf(run.dy, run.dx + i + kShortLanes);
      const auto r = narrow(low.red, high.red);
      const auto g = narrow(low.green, high.green);
      const auto b = narrow(low.blue, high.blue);
      hn::StoreInterleaved3(r, g, b, d, left_ + kPackedBytes * i);
      hn::StoreInterleaved3(backwards(r), backwards(g), backwards(b), d,
                            right_ + kPackedBytes * (run.count - i));
    }
  }

  /// In the order of columns.
  const uint8_t* left() const { return left_; }
  const uint8_t* right() const { return right_ + kPackedBytes * kBlock; }

 private:
  static constexpr int kMaxSide = 0xFFFF;  // squared half diagonals have 31 bits

  // The corners' distance of 1.0 has 16 bits. Joined, it becomes 32767, which falls off the same.
  IntVector distances(int dy, int dx) const {
    const Ints d;
    const auto x = hn::Add(iota_, hn::Set(d, dx));
    const auto squared = hn::Add(hn::Mul(x, x), hn::Set(d, dy * dy));
    return hn::ShiftRight<15>(hn::Mul(squared, hn::Set(d, light_.norm)));
  }

  IntVector weights(IntVector falloff) const {
    const Ints d;
    const auto reach =
        hn::Add(hn::Max(falloff, hn::Set(d, light_.full)), hn::Set(d, light_.full >> 2));
    const auto taken = hn::ShiftRight<15>(hn::Mul(reach, hn::Set(d, light_.inverse)));
    return hn::Max(hn::Sub(hn::Set(d, 32767), taken), hn::Zero(d));
  }

  /// What the light takes from the colours: (98301 - 8 w) x 0.33333, truncated. Single precision
  /// was compared with double for all weights: up to 24661 it is the same.
  static IntVector dimmed(IntVector weight) {
    const Ints d;
    const Floats floats;
    const auto scale = hn::Sub(hn::Set(d, 98301), hn::ShiftLeft<3>(weight));
    const auto product = hn::Mul(hn::ConvertTo(floats, scale), hn::Set(floats, 0.33333f));
#if HWY_TARGET == HWY_NEON
    return hn::ConvertTo(d, product);
#else
    return IntVector{_mm256_cvttps_epi32(product.raw)};  // no care for values beyond 31 bits
#endif
  }

  ShortGains gainsOf(int dy, int dx) const {
    const UnsignedVector distance =
        hn::BitCast(Unsigned(), join(distances(dy, dx), distances(dy, dx + kIntLanes)));
    const UnsignedVector falloff = falloffs(distance);
    const UnsignedVector zero = hn::Zero(Unsigned());
    const IntVector low = weights(hn::BitCast(Ints(), hn::InterleaveLower(falloff, zero)));
    const IntVector high =
        weights(hn::BitCast(Ints(), hn::InterleaveUpper(Unsigned(), falloff, zero)));
    const ShortVector w = join(low, high);
    const ShortVector k = join(dimmed(low), dimmed(high));
    return {hn::Add(scaled(k, 122), scaled(w, 255)), hn::Add(scaled(k, 74), scaled(w, 4 * 33)),
            hn::Add(scaled(k, 97), scaled(w, 97))};
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
  const auto bytes = static_cast<std::size_t>(kPackedBytes * count);
  std::size_t at = 0;
  for (; at + 18 <= bytes; at += 15) {
    const auto pixels = hn::TableLookupBytes(hn::LoadU(d, src + at), turned);
    hn::StoreU(hn::SaturatedAdd(pixels, hn::LoadU(d, gains + at)), d, dst + at);
  }
  for (; at < bytes; at += kPackedBytes) {
    for (std::size_t k = 0; k < kPackedBytes; ++k) {
      dst[at + k] = static_cast<uint8_t>(std::min(src[at + 2 - k] + gains[at + k], 255));
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
    const Corners left = mirrors.of(run.y, run.x);
    const Corners right = mirrors.of(run.y, run.x + run.count - 1);
    row.workOut(run, {src + left[0], src + right[2], src + left[1], src + right[3], dst + left[0],
                      dst + right[2], dst + left[1], dst + right[3]});
    lightUp(src + left[0], dst + left[0], row.left(), run.count);
    lightUp(src + right[2], dst + right[2], row.right(), run.count);
    lightUp(src + left[1], dst + left[1], row.left(), run.count);
    lightUp(src + right[3], dst + right[3], row.right(), run.count);
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
