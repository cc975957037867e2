// Effects beside their definitions as plain scalar loops, on one 2-megapixel image. Compare figures
// of one run, as ratios.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/pattern.h"
#include "kernels/box_blur.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/pretty_filters.h"
#include "tests/unit/corner_reference.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

template <class Effect>
void runOn(benchmark::State& state, int channels, Effect effect) {
  auto src = alg::bench::pattern(kPixels * static_cast<std::size_t>(channels));
  std::vector<uint8_t> dst(src.size());
  for (auto _ : state) {
    effect(src.data(), dst.data());
    benchmark::ClobberMemory();
  }
}

// Blurs ------------------------------------------------------------------------------------------

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }

int rampRadius(int peak, int i, int n) {
  const int c = n >> 1;
  return peak * (i < c ? c - i : i - c) / c;
}

/// One running sum; it is built anew at the start and wherever the radius changes.
class RunningSum {
 public:
  template <class Sample>
  int mean(int at, int size, int radius, bool changed, Sample sample) {
    if (at == 0 || changed) {
      sum = 0;
      for (int i = at - radius; i <= at + radius; ++i) {
        sum += sample(std::clamp(i, 0, size - 1));
      }
    } else {
      sum += sample(std::min(at + radius, size - 1)) - sample(std::max(at - radius - 1, 0));
    }
    return (sum * (0x10000 / (2 * radius + 1))) >> 16;
  }

 private:
  int sum = 0;
};

/// Row by row into a transposed image of ints, then column by column. The radius is that of the
/// column, or of the row.
void separablePlain(const uint8_t* src, uint8_t* dst, int channels, bool byRow) {
  std::vector<int> radii, work(kPixels * 3);
  for (int i = 0, n = byRow ? kHeight : kWidth; i < n; ++i) {
    radii.push_back(rampRadius(24, i, n));
  }
  const auto radiusAt = [&](int i) { return radii[static_cast<std::size_t>(std::max(i, 0))]; };
  for (int y = 0; y < kHeight; ++y) {
    RunningSum sums[3];
    for (int x = 0; x < kWidth; ++x) {
      const int r = radiusAt(byRow ? y : x);
      const bool changed = r != radiusAt((byRow ? y : x) - 1);
      for (int k = 0; k < 3; ++k) {
        work[static_cast<std::size_t>((x * kHeight + y) * 3 + k)] = sums[k].mean(
            x, kWidth, r, changed, [&](int i) { return src[(y * kWidth + i) * channels + k]; });
      }
    }
  }
  for (int x = 0; x < kWidth; ++x) {
    RunningSum sums[3];
    for (int y = 0; y < kHeight; ++y) {
      const int r = radiusAt(byRow ? y : x);
      const bool changed = r != radiusAt((byRow ? y : x) - 1);
      uint8_t* to = dst + (y * kWidth + x) * channels;
      for (int k = 0; k < 3; ++k) {
        to[channels == 3 ? 2 - k : k] =
            static_cast<uint8_t>(sums[k].mean(y, kHeight, r, changed, [&](int i) {
              return work[static_cast<std::size_t>((x * kHeight + i) * 3 + k)];
            }));
      }
    }
  }
}

/// All samples of each pixel's square.
void squarePlain(const uint32_t* src, uint32_t* dst) {
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const int r = rampRadius(12, x, kWidth);
      const uint32_t centre = src[y * kWidth + x];
      uint32_t red = 4 * (centre >> 16 & 255), green = 4 * (centre >> 8 & 255),
               blue = 4 * (centre & 255);
      for (int yy = y - r; yy <= y + r; ++yy) {
        for (int xx = x - r; xx <= x + r; ++xx) {
          const uint32_t word =
              src[std::clamp(yy, 0, kHeight - 1) * kWidth + std::clamp(xx, 0, kWidth - 1)];
          red += word >> 16 & 255, green += word >> 8 & 255, blue += word & 255;
        }
      }
      const uint32_t reciprocal = 0x10000u / static_cast<uint32_t>((2 * r + 1) * (2 * r + 1) + 4);
      dst[y * kWidth + x] = (red * reciprocal >> 16 << 16) + (green * reciprocal >> 16 << 8) +
                            (blue * reciprocal >> 16);
    }
  }
}

void blurs(benchmark::State& state, int channels, void (*effect)(uint8_t*, uint8_t*)) {
  runOn(state, channels, effect);
}
BENCHMARK_CAPTURE(blurs, miniature, 3, [](auto* src, auto* dst) {
  miniature(src, dst, kWidth, kHeight);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, miniaturePlain, 3, [](auto* src, auto* dst) {
  separablePlain(src, dst, 3, false);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, miniature_r, 3, [](auto* src, auto* dst) {
  miniature_r(src, dst, kWidth, kHeight, 0, kHeight);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, miniature_rPlain, 3, [](auto* src, auto* dst) {
  separablePlain(src, dst, 3, true);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, blur, 4, [](auto* src, auto* dst) {
  blur(dst, words(src), kWidth, kHeight);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, blurPlain, 4, [](auto* src, auto* dst) {
  separablePlain(src, dst, 4, false);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, ActiveBlur, 4, [](auto* src, auto* dst) {
  ActiveBlur(words(dst), words(src), 0, kWidth, kHeight);
}) -> Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurs, ActiveBlurPlain, 4, [](auto* src, auto* dst) {
  squarePlain(words(src), words(dst));
}) -> Unit(benchmark::kMillisecond);

/// The engine alone: its time must not grow with the peak radius.
void blurPeak(benchmark::State& state, void (*engine)(const alg::BoxBlur&), alg::RampAxis axis) {
  const bool byRow = axis == alg::RampAxis::kRows;
  const alg::RadiusRamp ramp{.peak = static_cast<int>(state.range(0)),
                             .entries = byRow ? kHeight : kWidth};
  runOn(state, 4, [&](const uint8_t* src, uint8_t* dst) {
    engine({src, dst, kWidth, kHeight, alg::BlurPixels::kWords, ramp, axis});
  });
}
BENCHMARK_CAPTURE(blurPeak, separableColumns, alg::blurSeparable, alg::RampAxis::kColumns)
    ->Arg(3)
    ->Arg(12)
    ->Arg(24)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurPeak, separableRows, alg::blurSeparable, alg::RampAxis::kRows)
    ->Arg(3)
    ->Arg(12)
    ->Arg(24)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(blurPeak, squareColumns, alg::blurSquare, alg::RampAxis::kColumns)
    ->Arg(3)
    ->Arg(12)
    ->Arg(24)
    ->Unit(benchmark::kMillisecond);

// Radial effects ---------------------------------------------------------------------------------

constexpr float kRadius = 0.8f;

void corners(benchmark::State& state, decltype(Fisheye)* effect) {
  runOn(state, 3, [effect](auto* src, auto* dst) { effect(src, dst, kRadius, kWidth, kHeight); });
}
BENCHMARK_CAPTURE(corners, Fisheye, Fisheye)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(corners, FisheyePlain, ref::fisheye)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(corners, FillLightFix, FillLightFix)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(corners, FillLightFixPlain, ref::fillLight)->Unit(benchmark::kMillisecond);

// Prague -----------------------------------------------------------------------------------------

/// What a call would take on top if it built its table of 122,501 roots, powers and exponentials.
void pragueTable(benchmark::State& state) {
  for (auto _ : state) {
    for (int i = 0; i <= 350 * 350; ++i) {
      const double length = std::sqrt(static_cast<float>(i)) / 350.0f;
      benchmark::DoNotOptimize(1.0 - std::exp(-5.0 * std::pow(length, 1.5)));
    }
  }
}
BENCHMARK(pragueTable)->Unit(benchmark::kMicrosecond);

/// Its table is built once per process: a small picture takes less than the table would.
void prague(benchmark::State& state) {
  const auto side = static_cast<int>(state.range(0));
  runOn(state, 3, [side](auto* src, auto* dst) { Prague(src, dst, side, side, 0); });
}
BENCHMARK(prague)->Arg(64)->Arg(1024)->Unit(benchmark::kMicrosecond);

}  // namespace
