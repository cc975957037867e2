// Vector twins of the box blur's kernels between pixels and work rows, compiled once per vector
// target.
//
// Prefix sums go four pixels a step, two to a vector of 16-bit lanes. Only the short chain of
// carries is serial:
//
//   lanes       0    1    2    3     4     5     6 7
//   pixels      a0   a1   a2   b0    b1    b2    - -
//   + 3 up      a0   a1   a2   a0+b0 a1+b1 a2+b2 ..    + carry of all pixels before
//   total       the lanes 3, 4, 5 twice                goes to the carry
//
// Vectors are stored every six lanes; the next one overwrites the rest. AVX-512 takes eight pixels
// to a vector, which bytes cross at will.
#define ALG_ALSO_AVX512
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "kernels/box_blur_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/box_blur_pixels_simd.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/block_ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& sumUpVector = sumUpPlain;
constexpr auto& dropAlphaVector = dropAlphaPlain;
constexpr auto& addAlphaVector = addAlphaPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Shorts = hn::Repartition<uint16_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;
using ShortVector = hn::Vec<Shorts>;
using Bytes16 = hn::Full128<uint8_t>;
using Shorts8 = hn::Full128<uint16_t>;

constexpr std::size_t kStep = 4;  // pixels in 16 bytes of either kind
constexpr uint8_t kNone = 0x80;   // the index of a zero

// Prefix sums ------------------------------------------------------------------------------------

#if ALG_IS_AVX512()

constexpr std::size_t kSumStep = 8;  // pixels
constexpr __mmask64 kSumBytes = (__mmask64{1} << 2 * kBlurElements * kSumStep) - 1;

// Where the bytes of eight pixels and those of their partial sums come from. Each pixel takes what
// the last pixel of the half before has: in pairs, in fours, in eights.
template <int kBytes>
struct SumOrders {
  constexpr SumOrders() {
    for (int lane = 0; lane < 24; ++lane) {
      const int x = lane / 3, k = lane % 3;
      const int byte = kBytes == kPackedBytes ? 2 - k : k;
      for (int b = 0; b < 2; ++b) {
        const int at = 2 * lane + b;
        pixels[at] = static_cast<uint8_t>((x - 1 + b) * kBytes + byte);
        fours[at] = static_cast<uint8_t>((x / 4 * 4 + 1) * 6 + 2 * k + b);
        eights[at] = static_cast<uint8_t>(3 * 6 + 2 * k + b);
        last[at] = static_cast<uint8_t>(7 * 6 + 2 * k + b);
        first[at] = static_cast<uint8_t>(2 * k + b);
        const auto bit = uint64_t{1} << at;
        takesPixel |= b == 1 || x % 2 == 1 ? bit : 0;
        takesFours |= x % 4 >= 2 ? bit : 0;
        takesEights |= x >= 4 ? bit : 0;
      }
    }
  }
  uint8_t pixels[64] = {}, fours[64] = {}, eights[64] = {}, last[64] = {}, first[64] = {};
  uint64_t takesPixel = 0, takesFours = 0, takesEights = 0;
};

template <int kBytes>
std::size_t sumUpSteps(const uint8_t* row, std::size_t width, uint16_t* prefix) {
  HWY_ALIGN static constexpr SumOrders<kBytes> kOrders;
  const Bytes bytes;
  const Shorts shorts;
  const auto fours = hn::Load(bytes, kOrders.fours), eights = hn::Load(bytes, kOrders.eights);
  const auto pixels = hn::Load(bytes, kOrders.pixels), last = hn::Load(bytes, kOrders.last);
  const auto take = [=](uint64_t mask, auto from, auto order) HWY_ATTR {
    return ShortVector{_mm512_maskz_permutexvar_epi8(mask, order.raw, from.raw)};
  };
  auto carry = take(kSumBytes, hn::LoadU(shorts, prefix), hn::Load(bytes, kOrders.first));
  uint16_t* to = prefix + kBlurElements;
  // A load is 32 bytes.
  constexpr std::size_t kReach = kBytes == kPackedBytes ? 11 : kSumStep;
  std::size_t x = 0;
  for (; x + kReach <= width; x += kSumStep, to += kBlurElements * kSumStep) {
    const ByteVector from{_mm512_castsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(row + kBytes * x)))};
    auto sums = hn::BitCast(
        shorts, ops::weighPairs<1, 1>(hn::BitCast(bytes, take(kOrders.takesPixel, from, pixels))));
    sums = hn::Add(sums, take(kOrders.takesFours, sums, fours));
    sums = hn::Add(sums, take(kOrders.takesEights, sums, eights));
    hn::StoreU(hn::Add(sums, carry), shorts, to);
    carry = hn::Add(carry, take(kSumBytes, sums, last));
  }
  return x;
}

#else

// Where the bytes of two pixels come from, the first one being pixel `first` of a vector.
template <int kBytes>
hn::Vec<Bytes16> pixelPair(int first) {
  HWY_ALIGN uint8_t from[16];
  for (int lane = 0; lane < 8; ++lane) {
    const int k = kBytes == kPackedBytes ? 2 - lane % 3 : lane % 3;
    const int byte = (first + lane / 3) * kBytes + k;
    from[2 * lane] = lane < 6 ? static_cast<uint8_t>(byte) : kNone;
    from[2 * lane + 1] = kNone;
  }
  return hn::Load(Bytes16(), from);
}

template <int kBytes>
std::size_t sumUpSteps(const uint8_t* row, std::size_t width, uint16_t* prefix) {
  const Bytes16 bytes;
  const Shorts8 shorts;
  const auto pair0 = pixelPair<kBytes>(0);
  const auto pair1 = pixelPair<kBytes>(2);
  HWY_ALIGN static constexpr uint8_t kSecond[16] = {6, 7, 8,  9,  10,    11,    6,     7,
                                                    8, 9, 10, 11, kNone, kNone, kNone, kNone};
  HWY_ALIGN static constexpr uint8_t kFirst[16] = {0, 1, 2, 3, 4,     5,     0,     1,
                                                   2, 3, 4, 5, kNone, kNone, kNone, kNone};
  const auto second = hn::Load(bytes, kSecond);
  const auto lookUp = [=](auto from, auto index) HWY_ATTR {
    return hn::BitCast(shorts, hn::TableLookupBytesOr0(hn::BitCast(bytes, from), index));
  };
  const auto scan = [=](auto pixels) HWY_ATTR {
    return hn::Add(pixels,
                   hn::BitCast(shorts, hn::ShiftLeftBytes<6>(bytes, hn::BitCast(bytes, pixels))));
  };
  auto carry = lookUp(hn::LoadU(shorts, prefix), hn::Load(bytes, kFirst));
  prefix += kBlurElements;
  // A load is 16 bytes, also where four pixels have only 12.
  constexpr std::size_t kReach = kBytes == kPackedBytes ? 6 : kStep;
  const auto step = [=](const uint8_t* from, auto before, uint16_t* to) HWY_ATTR {
    const auto pixels = hn::LoadU(bytes, from);
    const auto sums0 = scan(lookUp(pixels, pair0));
    const auto sums1 = scan(lookUp(pixels, pair1));
    const auto middle = hn::Add(before, lookUp(sums0, second));
    hn::StoreU(hn::Add(sums0, before), shorts, to);
    hn::StoreU(hn::Add(sums1, middle), shorts, to + 6);
    return hn::Add(middle, lookUp(sums1, second));
  };
  std::size_t x = 0;
  for (; x + kStep + kReach <= width; x += 2 * kStep) {
    carry = step(row + kBytes * x, carry, prefix + kBlurElements * x);
    carry = step(row + kBytes * (x + kStep), carry, prefix + kBlurElements * (x + kStep));
  }
  for (; x + kReach <= width; x += kStep) {
    carry = step(row + kBytes * x, carry, prefix + kBlurElements * x);
  }
  return x;
}

#endif

void sumUpVector(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix) {
  const bool words = pixels == BlurPixels::kWords;
  const std::size_t done = words ? sumUpSteps<kArgbBytes>(row, width, prefix)
                                 : sumUpSteps<kPackedBytes>(row, width, prefix);
  sumUpPlain(pixels, row + static_cast<std::size_t>(words ? kArgbBytes : kPackedBytes) * done,
             width - done, prefix + kBlurElements * done);
}

// Words ------------------------------------------------------------------------------------------

#if ALG_IS_NEON()

constexpr std::size_t kWordStep = 16;

HWY_INLINE void dropAlphas(const uint8_t* words, uint8_t* bytes) {
  const uint8x16x4_t all = vld4q_u8(words);
  const uint8x16x3_t colours{all.val[0], all.val[1], all.val[2]};
  vst3q_u8(bytes, colours);
}

HWY_INLINE void addAlphas(const uint8_t* bytes, uint8_t* words) {
  const uint8x16x3_t colours = vld3q_u8(bytes);
  const uint8x16x4_t all{colours.val[0], colours.val[1], colours.val[2], vdupq_n_u8(0)};
  vst4q_u8(words, all);
}

#else

#if ALG_IS_AVX512()

using PixelBytes = Bytes;
constexpr std::size_t kWordStep = 16;

struct WordOrders {
  constexpr WordOrders() {
    for (int i = 0; i < 64; ++i) {
      drop[i] = static_cast<uint8_t>(i / 3 * 4 + i % 3);
      add[i] = static_cast<uint8_t>(i / 4 * 3 + i % 4);
    }
  }
  uint8_t drop[64] = {}, add[64] = {};
};

HWY_ALIGN constexpr WordOrders kWordOrders;

ByteVector withoutAlphas(ByteVector words) {
  return ByteVector{
      _mm512_permutexvar_epi8(hn::Load(PixelBytes(), kWordOrders.drop).raw, words.raw)};
}

ByteVector withAlphas(ByteVector bytes) {
  constexpr __mmask64 kColours = 0x7777777777777777;
  return ByteVector{_mm512_maskz_permutexvar_epi8(
      kColours, hn::Load(PixelBytes(), kWordOrders.add).raw, bytes.raw)};
}

#else

using PixelBytes = Bytes16;
constexpr std::size_t kWordStep = kStep;

HWY_INLINE hn::Vec<Bytes16> withoutAlphas(hn::Vec<Bytes16> words) {
  HWY_ALIGN static constexpr uint8_t kFrom[16] = {0,  1,  2,  4,  5,     6,     8,     9,
                                                  10, 12, 13, 14, kNone, kNone, kNone, kNone};
  return hn::TableLookupBytesOr0(words, hn::Load(Bytes16(), kFrom));
}

HWY_INLINE hn::Vec<Bytes16> withAlphas(hn::Vec<Bytes16> bytes) {
  HWY_ALIGN static constexpr uint8_t kFrom[16] = {0, 1, 2, kNone, 3, 4,  5,  kNone,
                                                  6, 7, 8, kNone, 9, 10, 11, kNone};
  return hn::TableLookupBytesOr0(bytes, hn::Load(Bytes16(), kFrom));
}

#endif

// A whole vector is read and written each; those of the row end with the last word.
HWY_INLINE void dropAlphas(const uint8_t* words, uint8_t* bytes) {
  hn::StoreU(withoutAlphas(hn::LoadU(PixelBytes(), words)), PixelBytes(), bytes);
}

HWY_INLINE void addAlphas(const uint8_t* bytes, uint8_t* words) {
  hn::StoreU(withAlphas(hn::LoadU(PixelBytes(), bytes)), PixelBytes(), words);
}

#endif

// How many words went past the caches: to the last whole cache line.
std::size_t streamWords(const uint8_t* bytes, std::size_t width, uint8_t* words) {
#if ALG_IS_NEON()
  (void)bytes, (void)width, (void)words;
  return 0;
#else
  constexpr std::size_t kLine = 64, kLineWords = kLine / kArgbBytes;
  const auto begin = reinterpret_cast<std::uintptr_t>(words);
  if (begin % kArgbBytes != 0) {
    return 0;
  }
  std::size_t x = std::min<std::size_t>(width, (kLine - begin % kLine) % kLine / kArgbBytes);
  addAlphaPlain(bytes, x, words);
  for (; x + kLineWords <= width; x += kLineWords) {
    for (std::size_t i = x; i < x + kLineWords; i += kWordStep) {
      hn::Stream(withAlphas(hn::LoadU(PixelBytes(), bytes + kBlurElements * i)), PixelBytes(),
                 words + kArgbBytes * i);
    }
  }
  return x;
#endif
}

void dropAlphaVector(const uint8_t* words, std::size_t width, uint8_t* bytes) {
  std::size_t x = 0;
  for (; x + kWordStep <= width; x += kWordStep) {
    dropAlphas(words + kArgbBytes * x, bytes + kBlurElements * x);
  }
  dropAlphaPlain(words + kArgbBytes * x, width - x, bytes + kBlurElements * x);
}

void addAlphaVector(const uint8_t* bytes, std::size_t width, uint8_t* words, bool stream) {
  std::size_t x = stream ? streamWords(bytes, width, words) : 0;
  for (; x + kWordStep <= width; x += kWordStep) {
    addAlphas(bytes + kBlurElements * x, words + kArgbBytes * x);
  }
  addAlphaPlain(bytes + kBlurElements * x, width - x, words + kArgbBytes * x);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void sumUp(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix) {
  ALG_DISPATCH(sumUpVector)(pixels, row, width, prefix);
}

void dropAlpha(const uint8_t* words, std::size_t width, uint8_t* bytes) {
  ALG_DISPATCH(dropAlphaVector)(words, width, bytes);
}

void addAlpha(const uint8_t* bytes, std::size_t width, uint8_t* words, bool stream) {
  ALG_DISPATCH(addAlphaVector)(bytes, width, words, stream);
}

void endStream() { hwy::FlushStream(); }

}  // namespace alg
#endif
