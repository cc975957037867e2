// Vector twin of the fill light, compiled once per vector target.
//
// Gains are worked out for the left half of a row, most of it in 16-bit lanes, and kept as bytes in
// the order of a destination row, for it and, back to front, for its image on the right. Where the
// light is even, towards the centre, there is one gain for all. What is left to do for a pixel is
// to turn it round and to add (light_up-inl.h).
//
// Memory is quickest in its own order, so a band of rows at the top is lit downwards, then its
// images at the bottom, downwards too, with the gains kept: taking turns between a row and its
// image costs a third more time. With an even height the row above the middle one ends with the
// middle one's gains, whose image it is.
#include "base/block.h"
#include "base/image_size.h"
#include "classic/light_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "classic/light_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
// After Highway, which defines the target.
#include "classic/light_up-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& fillLightVector = fillLightPlain;

#else

using Shorts = hn::Repartition<int16_t, Bytes>;
using Unsigned = hn::Repartition<uint16_t, Bytes>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Floats = hn::Repartition<float, Bytes>;
using ShortVector = hn::Vec<Shorts>;
using UnsignedVector = hn::Vec<Unsigned>;
using IntVector = hn::Vec<Ints>;

constexpr int kShortLanes = kBlock / 2;
constexpr int kIntLanes = kBlock / 4;

/// (a x b) >> 15 of values below 1.0.
UnsignedVector product(UnsignedVector a, UnsignedVector b) {
#if ALG_IS_NEON()
  return UnsignedVector(vreinterpretq_u16_s16(
      vqdmulhq_s16(vreinterpretq_s16_u16(a.raw), vreinterpretq_s16_u16(b.raw))));
#else
  return hn::MulHigh(hn::Add(a, a), b);
#endif
}

/// (v x factor) >> 15 for either sign and factors below 0.5.
ShortVector scaled(ShortVector v, int factor) {
#if ALG_IS_NEON()
  return ShortVector(vqdmulhq_n_s16(v.raw, static_cast<int16_t>(factor)));
#else
  return hn::MulHigh(v, hn::Set(Shorts(), static_cast<int16_t>(2 * factor)));
#endif
}

static_assert(falloff(0x7FFF) == falloff(0x8000));

/// The most by which `falloff`, being rounded, exceeds what it is farther from the centre.
constexpr int ripple() {
  int most = 0;
  int nearest = 0x8000;
  for (int d = 0x8000; d >= 0; --d) {
    const int here = falloff(d);
    most = here - nearest > most ? here - nearest : most;
    nearest = here < nearest ? here : nearest;
  }
  return most;
}
constexpr int kRipple = ripple();

/// The distance up to which no falloff exceeds `full`, so that the light is even; -1 if there is
/// none.
int evenDistance(int full) {
  int near = -1, far = 0x8001;
  while (far - near > 1) {
    const int middle = (near + far) / 2;
    (falloff(middle) + kRipple <= full ? near : far) = middle;
  }
  while (near < 0x8000 && falloff(near + 1) <= full) {
    ++near;
  }
  return near;
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

// Ints to shorts and shorts to bytes, in the order of instructions: on x86 each half of a vector is
// joined for itself, which the halves of falloffs undo for ints; bytes are put in order.
ShortVector join(IntVector low, IntVector high) {
#if ALG_IS_NEON()
  return ShortVector(vcombine_s16(vqmovn_s32(low.raw), vqmovn_s32(high.raw)));
#else
  return ShortVector{_mm256_packs_epi32(low.raw, high.raw)};
#endif
}

hn::Vec<Bytes> narrow(ShortVector low, ShortVector high) {
#if ALG_IS_NEON()
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
#if ALG_IS_NEON()
  const uint8x16_t halves = vrev64q_u8(v.raw);
  return hn::Vec<Bytes>(vextq_u8(halves, halves, 8));
#else
  const Unsigned d;
  const UnsignedVector pairs = hn::Reverse(d, hn::BitCast(d, v));
  return hn::BitCast(Bytes(), hn::Or(hn::ShiftLeft<8>(pairs), hn::ShiftRight<8>(pairs)));
#endif
}

class LightTerms {
 public:
  explicit LightTerms(const FillLight& light)
      : light_(light), evenDistance_(evenDistance(light.full)) {}

  /// Whether all weights are at most half, so that gains are bytes and their terms 16 bits wide.
  /// All radii from 0.3 to 100 or more are like that.
  bool fits() const {
    const int64_t least = int64_t{light_.full} + (light_.full >> 2);
    const int64_t most = int64_t{std::max(light_.full, 0x8000)} + (light_.full >> 2);
    return light_.width <= kMaxSide && light_.height <= kMaxSide && light_.full >= 0 &&
           light_.inverse >= 0 && most * light_.inverse <= INT32_MAX &&
           32767 - ((least * light_.inverse) >> 15) <= 0x4000;
  }

  /// The gains of a row's columns 0..: in this order and for their images. Stops where the light is
  /// even, or at the middle, and returns that column. Meanwhile memory has time to bring the pixels
  /// to be lit next, at `src` and `dst`.
  int workOut(int y, uint8_t* left, uint8_t* rightEnd, const uint8_t* src,
              const uint8_t* dst) const {
    const Bytes d;
    const int dy = y - (light_.height >> 1);
    const int middle = light_.width >> 1;
    const int count = (light_.width - 1) >> 1;
    int x = 0;
    for (; x < count && !even(dy, x - middle); x += kBlock) {
      for (int line = 0; line < 2 * kPackedBytes * kBlock; line += 64) {
        __builtin_prefetch(src + 2 * kPackedBytes * x + line);
        __builtin_prefetch(dst + 2 * kPackedBytes * x + line);
      }
      const ShortGains low = gainsOf(dy, x - middle);
      const ShortGains high = gainsOf(dy, x - middle + kShortLanes);
      const auto r = narrow(low.red, high.red);
      const auto g = narrow(low.green, high.green);
      const auto b = narrow(low.blue, high.blue);
      hn::StoreInterleaved3(r, g, b, d, left + kPackedBytes * x);
      hn::StoreInterleaved3(backwards(r), backwards(g), backwards(b), d,
                            rightEnd - kPackedBytes * (x + kBlock));
    }
    return std::min(x, count);
  }

  Gains middleOf(int y) const { return light_.gains(y - (light_.height >> 1), 0); }

 private:
  static constexpr int kMaxSide = 0xFFFF;  // squared half diagonals have 31 bits

  /// Whether the light is even from there to the centre.
  bool even(int dy, int dx) const { return light_.distance(dy, dx) <= evenDistance_; }

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
#if ALG_IS_NEON()
    return hn::ConvertTo(d, product);
#else
    return IntVector{_mm256_cvttps_epi32(product.raw)};  // no value has more than 31 bits
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
  const int evenDistance_;
  const IntVector iota_ = hn::Iota(Ints(), 0);
};

/// The gains of a row and its image.
class LightRow {
 public:
  /// Bytes of memory for a row of that many pixels: two halves, each with a block to spare.
  static std::size_t bytesFor(int width) {
    return 2 * kPackedBytes * (static_cast<std::size_t>(width) / 2 + 2 * kBlock);
  }

  void keepIn(uint8_t* memory, std::size_t size) {
    left_ = memory;
    rightEnd_ = memory + size - kPackedBytes * kBlock;
  }

  void workOut(const LightTerms& terms, int y, const uint8_t* src, const uint8_t* dst) {
    sides_ = kPackedBytes * static_cast<std::size_t>(terms.workOut(y, left_, rightEnd_, src, dst));
    const Gains gains = terms.middleOf(y);
    for (std::size_t i = 0; i < sizeof middle_; i += kPackedBytes) {
      middle_[i] = static_cast<uint8_t>(gains.red);
      middle_[i + 1] = static_cast<uint8_t>(gains.green);
      middle_[i + 2] = static_cast<uint8_t>(gains.blue);
    }
  }

  void light(const uint8_t* src, uint8_t* dst, std::size_t rowBytes) const {
    const std::size_t right = rowBytes - sides_;
    lightUp(src, dst, sides_, rowBytes, left_, 15);
    lightUp(src + sides_, dst + sides_, right - sides_, rowBytes - sides_, middle_, 0);
    lightUp(src + right, dst + right, sides_, sides_, rightEnd_ - sides_, 15);
  }

 private:
  uint8_t* left_ = nullptr;
  uint8_t* rightEnd_ = nullptr;
  std::size_t sides_ = 0;    // bytes of pixels on either side with gains of their own
  uint8_t middle_[18] = {};  // those of all others
};

void fillLightVector(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  constexpr int kBand = 8;
  const LightTerms terms(light);
  const std::size_t size = LightRow::bytesFor(light.width);
  const auto memory = terms.fits() ? allocateBlock(kBand * size) : nullptr;
  if (memory == nullptr) {
    return fillLightPlain(light, src, dst);
  }
  LightRow rows[kBand];
  for (std::size_t k = 0; k < kBand; ++k) {
    rows[k].keepIn(memory.get() + size * k, size);
  }
  const std::size_t rowBytes = kPackedBytes * static_cast<std::size_t>(light.width);
  const int middle = light.height >> 1;
  for (int top = 0; top <= middle; top += kBand) {
    const int count = std::min(kBand, middle + 1 - top);
    for (int k = 0; k < count; ++k) {
      const std::size_t at = rowBytes * static_cast<std::size_t>(top + k);
      rows[k].workOut(terms, top + k, src + at, dst + at);
      rows[k].light(src + at, dst + at, rowBytes);
    }
    for (int k = count - 1; k >= 0; --k) {
      const int image = light.height - 1 - top - k;
      if (image != middle) {  // that row has its own terms
        const std::size_t at = rowBytes * static_cast<std::size_t>(image);
        rows[k].light(src + at, dst + at, rowBytes);
      }
    }
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void fillLight(const FillLight& light, const uint8_t* src, uint8_t* dst) {
  ALG_DISPATCH(fillLightVector)(light, src, dst);
}

}  // namespace alg
#endif
