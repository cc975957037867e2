// Four pixels of a stretched row by four loads and a shuffle, compiled once per vector target.
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

constexpr auto& stretchRowVector = stretchRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using QuadBytes = hn::FixedTag<uint8_t, 16>;
using QuadVector = hn::Vec<QuadBytes>;

constexpr std::size_t kQuad = 4;

// From where in a quad the bytes of its stretched pixels come, for each of StretchedPixels.
alignas(16) constexpr uint8_t kOrders[][16] = {
    {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14},
    {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12},
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
};

HWY_INLINE uint32_t loadPixel(const uint8_t* pictureRow, uint32_t column) {
  uint32_t pixel;
  std::memcpy(&pixel, pictureRow + sizeof pixel * column, sizeof pixel);
  return pixel;
}

HWY_INLINE QuadVector loadQuad(const uint8_t* pictureRow, const uint32_t* columns) {
  const auto at = [&](int i) HWY_ATTR { return loadPixel(pictureRow, columns[i]); };
#if ALG_IS_AVX2()
  const auto lane = [&](int i) HWY_ATTR { return static_cast<int>(at(i)); };
  return QuadVector{_mm_setr_epi32(lane(0), lane(1), lane(2), lane(3))};
#else  // NEON
  uint32x4_t quad = vdupq_n_u32(at(0));
  quad = vsetq_lane_u32(at(1), quad, 1);
  quad = vsetq_lane_u32(at(2), quad, 2);
  quad = vsetq_lane_u32(at(3), quad, 3);
  return QuadVector(vreinterpretq_u8_u32(quad));
#endif
}

void stretchRowVector(const uint8_t* pictureRow, const uint32_t* columns, std::size_t count,
                      StretchedPixels pixels, uint8_t* to) {
  const QuadBytes d;
  const std::size_t bytes = stretchedBytes(pixels);
  const QuadVector order = hn::Load(d, kOrders[static_cast<std::size_t>(pixels)]);
  for (std::size_t i = 0; i < count; i += kQuad, to += kQuad * bytes) {
    hn::StoreU(hn::TableLookupBytes(loadQuad(pictureRow, columns + i), order), d, to);
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void stretchRow(const uint8_t* pictureRow, const uint32_t* columns, std::size_t count,
                StretchedPixels pixels, uint8_t* to) {
  ALG_DISPATCH(stretchRowVector)(pictureRow, columns, count, pixels, to);
}

}  // namespace alg
#endif
