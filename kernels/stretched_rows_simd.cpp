// Stretched rows, compiled once per vector target. Pixels are picked out of windows of the
// picture's row by shuffles, four at a time from pictures that are at most 2.3 times as wide as the
// image, with AVX-512 sixteen from those at most twice as wide. From rows of wider pictures, or of
// very narrow ones, they come by a load each.
#define ALG_ALSO_AVX512
#include "kernels/stretched_rows.h"

#include <cstring>

#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/stretched_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr StretchWindows kWindows{};
constexpr auto& stretchRowVector = stretchRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using QuadBytes = hn::FixedTag<uint8_t, 16>;
using QuadVector = hn::Vec<QuadBytes>;

constexpr std::size_t kQuad = 4;
constexpr std::size_t kPixelBytes = sizeof(uint32_t);

// From where in a quad the bytes of its stretched pixels come, for each of StretchedPixels.
alignas(16) constexpr uint8_t kOrders[][16] = {
    {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14},
    {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12},
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
};

HWY_INLINE QuadVector orderOf(StretchedPixels pixels) {
  return hn::Load(QuadBytes(), kOrders[static_cast<std::size_t>(pixels)]);
}

HWY_INLINE uint32_t loadPixel(const uint8_t* pictureRow, uint32_t column) {
  uint32_t pixel;
  std::memcpy(&pixel, pictureRow + sizeof pixel * column, sizeof pixel);
  return pixel;
}

HWY_INLINE QuadVector loadQuad(const uint8_t* pictureRow, const uint32_t* columns) {
  const auto at = [&](int i) HWY_ATTR { return loadPixel(pictureRow, columns[i]); };
#if ALG_IS_NEON()
  uint32x4_t quad = vdupq_n_u32(at(0));
  quad = vsetq_lane_u32(at(1), quad, 1);
  quad = vsetq_lane_u32(at(2), quad, 2);
  quad = vsetq_lane_u32(at(3), quad, 3);
  return QuadVector(vreinterpretq_u8_u32(quad));
#else
  const auto lane = [&](int i) HWY_ATTR { return static_cast<int>(at(i)); };
  return QuadVector{_mm_setr_epi32(lane(0), lane(1), lane(2), lane(3))};
#endif
}

#if ALG_IS_AVX512()

constexpr StretchWindows kWindows{.group = 16, .pixels = 32, .scale = 1, .address = 0};

// The same orders for sixteen pixels.
struct Orders {
  constexpr Orders() {
    for (std::size_t kind = 0; kind < 3; ++kind) {
      const std::size_t bytes = kQuad * stretchedBytes(static_cast<StretchedPixels>(kind));
      for (std::size_t i = 0; i < 4 * bytes; ++i) {
        of[kind][i] = static_cast<uint8_t>(16 * (i / bytes) + kOrders[kind][i % bytes]);
      }
    }
  }
  alignas(64) uint8_t of[3][64] = {};
};
constexpr Orders kSixteens;

void pickRow(const uint8_t* pictureRow, const StretchColumns& columns, StretchedPixels pixels,
             uint8_t* to) {
  const std::size_t bytes = stretchedBytes(pixels);
  const __m512i order = _mm512_load_si512(kSixteens.of[static_cast<std::size_t>(pixels)]);
  const uint32_t* window = columns.windows;
  for (std::size_t i = 0; i < columns.count; i += kWindows.group, to += kWindows.group * bytes) {
    const uint8_t* from = pictureRow + kPixelBytes * *window++;
    const __m512i picked =
        _mm512_permutex2var_epi32(_mm512_loadu_si512(from), _mm512_loadu_si512(columns.picks + i),
                                  _mm512_loadu_si512(from + 64));
    _mm512_storeu_si512(to, _mm512_permutexvar_epi8(order, picked));
  }
}

#else

#if ALG_IS_NEON()

// A pixel's four bytes are picked one by one.
constexpr StretchWindows kWindows{
    .group = kQuad, .pixels = 8, .scale = 0x04040404, .address = 0x03020100};

HWY_INLINE QuadVector pickQuad(const uint8_t* window, const uint32_t* picks) {
  const uint8x16x2_t pixels{vld1q_u8(window), vld1q_u8(window + 16)};
  return QuadVector(vqtbl2q_u8(pixels, vreinterpretq_u8_u32(vld1q_u32(picks))));
}

#else

constexpr StretchWindows kWindows{.group = kQuad, .pixels = 8, .scale = 1, .address = 0};

HWY_INLINE QuadVector pickQuad(const uint8_t* window, const uint32_t* picks) {
  const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(window));
  const __m128i lanes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(picks));
  return QuadVector{
      _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(pixels, _mm256_castsi128_si256(lanes)))};
}

#endif

// Four quads a step, which in-order cores begin before they wait for the first.
void pickRow(const uint8_t* pictureRow, const StretchColumns& columns, StretchedPixels pixels,
             uint8_t* to) {
  constexpr std::size_t kQuads = 4;
  const std::size_t bytes = stretchedBytes(pixels);
  const QuadVector order = orderOf(pixels);
  const uint32_t* window = columns.windows;
  for (std::size_t i = 0; i < columns.count; i += kQuads * kQuad) {
    QuadVector quads[kQuads];
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < kQuads; ++k) {
      quads[k] = pickQuad(pictureRow + kPixelBytes * *window++, columns.picks + i + kQuad * k);
    }
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < kQuads; ++k, to += kQuad * bytes) {
      hn::StoreU(hn::TableLookupBytes(quads[k], order), QuadBytes(), to);
    }
  }
}

#endif

void stretchRowVector(const uint8_t* pictureRow, const StretchColumns& columns,
                      StretchedPixels pixels, uint8_t* to) {
  if (columns.windows != nullptr) {
    return pickRow(pictureRow, columns, pixels, to);
  }
  const std::size_t bytes = stretchedBytes(pixels);
  const QuadVector order = orderOf(pixels);
  for (std::size_t i = 0; i < columns.count; i += kQuad, to += kQuad * bytes) {
    hn::StoreU(hn::TableLookupBytes(loadQuad(pictureRow, columns.columns + i), order), QuadBytes(),
               to);
  }
}

#endif  // vectors or not

StretchWindows stretchWindowsVector() { return kWindows; }

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

StretchWindows stretchWindows() { return ALG_DISPATCH(stretchWindowsVector)(); }

void stretchRow(const uint8_t* pictureRow, const StretchColumns& columns, StretchedPixels pixels,
                uint8_t* to) {
  ALG_DISPATCH(stretchRowVector)(pictureRow, columns, pixels, to);
}

}  // namespace alg
#endif
