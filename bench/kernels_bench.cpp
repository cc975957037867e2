// Kernels and their plain definitions on one 12-megapixel image, beside memcpy. Compare figures of
// one run: bytes/s counts what is read and written.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "bench/pattern.h"
#include "convert/convert_rows.h"
#include "kernels/curve_map.h"

namespace {

using alg::bench::pattern;

constexpr std::size_t kWidth = 4000;
constexpr std::size_t kHeight = 3000;
constexpr std::size_t kPixels = kWidth * kHeight;

void countBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

void copyBlock(benchmark::State& state) {
  const auto src = pattern(3 * kPixels);
  std::vector<uint8_t> dst(src.size());
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), src.size());
    benchmark::ClobberMemory();
  }
  countBytes(state, 2 * src.size());
}
BENCHMARK(copyBlock);

using CurveMapper = decltype(alg::mapCurvesPlain);

void curves(benchmark::State& state, CurveMapper* mapper) {
  const auto src = pattern(3 * kPixels);
  std::vector<uint8_t> dst(src.size());
  const auto invert = [](int v) { return static_cast<uint8_t>(255 - v); };
  const alg::Curves table = alg::makeCurves(invert, invert, invert);
  for (auto _ : state) {
    mapper(src.data(), dst.data(), kPixels, table);
    benchmark::ClobberMemory();
  }
  countBytes(state, 2 * src.size());
}
BENCHMARK_CAPTURE(curves, vector, alg::mapCurvesSimd);
BENCHMARK_CAPTURE(curves, plain, alg::mapCurvesPlain);

using RowDecoder = decltype(alg::decodeRow);

void decode(benchmark::State& state, RowDecoder* decoder, alg::RowFormat format) {
  const auto luma = pattern(kPixels);
  const auto chroma = pattern(kPixels / 2);
  const std::size_t bytes = alg::pixelBytes(format);
  std::vector<uint8_t> pixels(bytes * kPixels);
  for (auto _ : state) {
    for (std::size_t row = 0; row < kHeight; ++row) {
      decoder(format, luma.data() + row * kWidth, chroma.data() + row / 2 * kWidth,
              pixels.data() + bytes * row * kWidth, kWidth);
    }
    benchmark::ClobberMemory();
  }
  countBytes(state, kPixels + kPixels / 2 + pixels.size());
}
BENCHMARK_CAPTURE(decode, argbVector, alg::decodeRow, alg::RowFormat::kArgbVU);
BENCHMARK_CAPTURE(decode, argbPlain, alg::decodeRowPlain, alg::RowFormat::kArgbVU);
BENCHMARK_CAPTURE(decode, packedVector, alg::decodeRow, alg::RowFormat::kPackedUV);
BENCHMARK_CAPTURE(decode, packedPlain, alg::decodeRowPlain, alg::RowFormat::kPackedUV);

using RowEncoder = decltype(alg::encodeLumaRow);

void encode(benchmark::State& state, RowEncoder* luma, RowEncoder* chroma, alg::RowFormat format) {
  const std::size_t bytes = alg::pixelBytes(format);
  const auto pixels = pattern(bytes * kPixels);
  std::vector<uint8_t> frame(kPixels + kPixels / 2);
  for (auto _ : state) {
    for (std::size_t row = 0; row < kHeight; ++row) {
      const uint8_t* from = pixels.data() + bytes * row * kWidth;
      luma(format, from, frame.data() + row * kWidth, kWidth);
      if (row % 2 == 1) {
        chroma(format, from, frame.data() + kPixels + row / 2 * kWidth, kWidth);
      }
    }
    benchmark::ClobberMemory();
  }
  countBytes(state, pixels.size() + frame.size());
}
BENCHMARK_CAPTURE(encode, argbVector, alg::encodeLumaRow, alg::encodeChromaRow,
                  alg::RowFormat::kArgbVU);
BENCHMARK_CAPTURE(encode, argbPlain, alg::encodeLumaRowPlain, alg::encodeChromaRowPlain,
                  alg::RowFormat::kArgbVU);
BENCHMARK_CAPTURE(encode, packedVector, alg::encodeLumaRow, alg::encodeChromaRow,
                  alg::RowFormat::kPackedUV);
BENCHMARK_CAPTURE(encode, packedPlain, alg::encodeLumaRowPlain, alg::encodeChromaRowPlain,
                  alg::RowFormat::kPackedUV);

}  // namespace
