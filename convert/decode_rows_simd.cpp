// Vector twins of the decoding row kernels, compiled once per vector target.
//
// Even and odd pixels are kept apart, so that chroma pairs match them lane by lane without being
// duplicated; a pair's arithmetic serves two pixels in each of two rows. A channel is the integer
// part of level + chroma, where level = 76310 (Y - 16). As 76310 is even, the last fraction bit
// never carries, and 15 bits of fraction are enough.
#define ALG_ALSO_AVX512
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "convert/decode_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/decode_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
// After Highway, which defines the target.
#include "convert/decode_neon-inl.h"
#include "convert/decode_x86-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& decodeRowVector = decodeRowPlain;
constexpr auto& decodeRowPairVector = decodeRowPairPlain;

#else

// The format whose code serves another.
constexpr RowFormat codeOf(RowFormat format) {
  return ALG_IS_NEON() || format == RowFormat::kPackedUV ? format : RowFormat::kArgbUV;
}

template <RowFormat kFormat, bool kTwo>
void decodeFormat(RowFormat format, const uint8_t* const (&luma)[2], const uint8_t* chroma,
                  uint8_t* const (&pixels)[2], std::size_t width, bool stream = false) {
  const Chroma factors(format);
  // The last pixels of an even row form a block that overlaps the one before.
  const bool again = width >= kBlock && width % 2 == 0;
  const std::size_t end = again ? width : width - width % kBlock;
  constexpr std::size_t kBytes = pixelBytes(kFormat);
  const uint8_t *const first = luma[0], *const second = luma[1];
  uint8_t *const firstPixels = pixels[0], *const secondPixels = pixels[1];
  // From the second block on, words are stored to whole cache lines if that splits no pair.
  const std::size_t before = (0 - reinterpret_cast<std::uintptr_t>(firstPixels)) % 64;
  const bool aligns = !ALG_IS_NEON() && kBytes == 4 && again && before % 8 == 0;
  const std::size_t lead = aligns && before != 0 ? before / 4 : kBlock;
  // Past the caches go those that are nothing but whole cache lines, in both rows.
  const bool linesAlike = kTwo && (secondPixels - firstPixels) % 64 == 0;
  const std::size_t streamed = stream && aligns && linesAlike ? before / 4 : end;
  const auto decodeAt = [&](std::size_t x, auto streams) HWY_ATTR {
    const ChromaTerms terms = chromaTerms<kFormat>(factors, chroma + x);
    decodeBlock<kFormat, streams>(first + x, terms, firstPixels + kBytes * x);
    if constexpr (kTwo) {
      decodeBlock<kFormat, streams>(second + x, terms, secondPixels + kBytes * x);
    }
  };
  for (std::size_t at = 0; at < end; at += at == 0 ? lead : kBlock) {
    const std::size_t x = at < width - kBlock ? at : width - kBlock;
    if constexpr (!ALG_IS_NEON() && kTwo && kBytes == 4) {
      if (x == at && x >= streamed) {
        decodeAt(x, std::true_type());
        continue;
      }
    }
    decodeAt(x, std::false_type());
  }
  if (end == width) {
    return;
  }
  // Fewer pixels than a block go through copies, so that nothing beyond the row is read or written.
  const std::size_t rest = width - end;
  uint8_t lumaTail[2][kBlock] = {}, chromaTail[kBlock] = {}, pixelTail[2][kBytes * kBlock];
  std::memcpy(chromaTail, chroma + end, rest + rest % 2);
  for (int row = 0; row < (kTwo ? 2 : 1); ++row) {
    std::memcpy(lumaTail[row], luma[row] + end, rest);
  }
  decodeFormat<kFormat, kTwo>(format, {lumaTail[0], lumaTail[1]}, chromaTail,
                              {pixelTail[0], pixelTail[1]}, kBlock);
  for (int row = 0; row < (kTwo ? 2 : 1); ++row) {
    std::memcpy(pixels[row] + kBytes * end, pixelTail[row], kBytes * rest);
  }
}

template <bool kTwo>
void decodeAny(RowFormat format, const uint8_t* const (&luma)[2], const uint8_t* chroma,
               uint8_t* const (&pixels)[2], std::size_t width, bool stream) {
  switch (format) {
    case RowFormat::kArgbUV:
      return decodeFormat<codeOf(RowFormat::kArgbUV), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kArgbVU:
      return decodeFormat<codeOf(RowFormat::kArgbVU), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kRgbaUV:
      return decodeFormat<codeOf(RowFormat::kRgbaUV), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kRgbaVU:
      return decodeFormat<codeOf(RowFormat::kRgbaVU), kTwo>(format, luma, chroma, pixels, width,
                                                            stream);
    case RowFormat::kPackedUV:
      return decodeFormat<RowFormat::kPackedUV, kTwo>(format, luma, chroma, pixels, width);
  }
}

void decodeRowVector(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                     std::size_t width) {
  decodeAny<false>(format, {luma, nullptr}, chroma, {pixels, nullptr}, width, false);
}

void decodeRowPairVector(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                         const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                         std::size_t width, bool stream) {
  decodeAny<true>(format, {luma, luma + lumaStride}, chroma, {pixels, pixels + pixelStride}, width,
                  stream);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void decodeRow(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
               std::size_t width) {
  ALG_DISPATCH(decodeRowVector)(format, luma, chroma, pixels, width);
}

void decodeRowPair(RowFormat format, const uint8_t* luma, std::ptrdiff_t lumaStride,
                   const uint8_t* chroma, uint8_t* pixels, std::ptrdiff_t pixelStride,
                   std::size_t width, bool stream) {
  ALG_DISPATCH(decodeRowPairVector)
  (format, luma, lumaStride, chroma, pixels, pixelStride, width, stream);
}

}  // namespace alg
#endif
