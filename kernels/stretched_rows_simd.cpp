// One shuffle for four pixels of a stretched row, compiled once per vector target.
#include "kernels/stretched_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/stretched_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if !ALG_HAS_VECTORS()

constexpr auto& stretchQuadsVector = stretchQuadsPlain;

#else

void stretchQuadsVector(const uint8_t* pictureRow, const StretchedQuad* quads, std::size_t count,
                        std::size_t step, uint8_t* to) {
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::FixedTag<uint8_t, 16> d;
  for (const StretchedQuad* quad = quads; quad != quads + count; ++quad, to += step) {
    const auto pixels = hn::LoadU(d, pictureRow + quad->offset);
    hn::StoreU(hn::TableLookupBytes(pixels, hn::LoadU(d, quad->bytes)), d, to);
  }
}

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

HWY_EXPORT(stretchQuadsVector);

void stretchQuads(const uint8_t* pictureRow, const StretchedQuad* quads, std::size_t count,
                  std::size_t step, uint8_t* to) {
  HWY_DYNAMIC_DISPATCH(stretchQuadsVector)(pictureRow, quads, count, step, to);
}

}  // namespace alg
#endif
