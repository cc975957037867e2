// Vector twins of the encoding row kernels, compiled once per vector target.
#define ALG_ALSO_AVX512
#include <cstring>

#include "convert/encode_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/encode_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
// After Highway, which defines the target.
#include "convert/encode_neon-inl.h"
#include "convert/encode_x86-inl.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& encodeLumaRowVector = encodeLumaRowPlain;
constexpr auto& encodeRowVector = encodeRowPlain;

#else

// The format whose code serves another.
constexpr RowFormat codeOf(RowFormat format) {
  return ALG_IS_NEON() || format == RowFormat::kPackedUV ? format : RowFormat::kArgbUV;
}

template <RowFormat kFormat, bool kChroma>
void encodeFormat(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
                  std::size_t width) {
  const Factors factors(format);
  constexpr std::size_t kBytes = pixelBytes(kFormat);
  // The last pixels of an even row form a block that overlaps the one before.
  const bool again = width >= kBlock && width % 2 == 0;
  const std::size_t end = again ? width : width - width % kBlock;
  for (std::size_t at = 0; at < end; at += kBlock) {
    const std::size_t x = at < width - kBlock ? at : width - kBlock;
    if constexpr (!ALG_IS_NEON() && kBytes == 4) {
      fetchPageAhead<kBytes * kBlock>(pixels + kBytes * x);
    }
    encodeBlock<kFormat, kChroma>(pixels + kBytes * x, factors, luma + x,
                                  kChroma ? chroma + x : nullptr);
  }
  if (end == width) {
    return;
  }
  // Fewer pixels than a block go through copies, so that nothing beyond the row is read or written.
  const std::size_t rest = width - end;
  uint8_t pixelTail[kBytes * kBlock] = {}, lumaTail[kBlock], chromaTail[kBlock];
  std::memcpy(pixelTail, pixels + kBytes * end, kBytes * rest);
  encodeFormat<kFormat, kChroma>(format, pixelTail, lumaTail, chromaTail, kBlock);
  std::memcpy(luma + end, lumaTail, rest);
  if constexpr (kChroma) {
    std::memcpy(chroma + end, chromaTail, rest + rest % 2);
  }
}

void encodeLumaRowVector(RowFormat format, const uint8_t* pixels, uint8_t* luma,
                         std::size_t width) {
  if (format == RowFormat::kPackedUV) {
    return encodeFormat<codeOf(RowFormat::kPackedUV), false>(format, pixels, luma, nullptr, width);
  }
  if (hasRedFirst(format)) {
    return encodeFormat<codeOf(RowFormat::kRgbaUV), false>(format, pixels, luma, nullptr, width);
  }
  encodeFormat<codeOf(RowFormat::kArgbUV), false>(format, pixels, luma, nullptr, width);
}

void encodeRowVector(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
                     std::size_t width) {
  switch (format) {
    case RowFormat::kArgbUV:
      return encodeFormat<codeOf(RowFormat::kArgbUV), true>(format, pixels, luma, chroma, width);
    case RowFormat::kArgbVU:
      return encodeFormat<codeOf(RowFormat::kArgbVU), true>(format, pixels, luma, chroma, width);
    case RowFormat::kRgbaUV:
      return encodeFormat<codeOf(RowFormat::kRgbaUV), true>(format, pixels, luma, chroma, width);
    case RowFormat::kRgbaVU:
      return encodeFormat<codeOf(RowFormat::kRgbaVU), true>(format, pixels, luma, chroma, width);
    case RowFormat::kPackedUV:
      return encodeFormat<codeOf(RowFormat::kPackedUV), true>(format, pixels, luma, chroma, width);
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void encodeLumaRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width) {
  ALG_DISPATCH(encodeLumaRowVector)(format, pixels, luma, width);
}

void encodeRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, uint8_t* chroma,
               std::size_t width) {
  ALG_DISPATCH(encodeRowVector)(format, pixels, luma, chroma, width);
}

}  // namespace alg
#endif
