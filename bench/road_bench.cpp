// Rotation and the whole effect road on a 12-megapixel frame.
#include <benchmark/benchmark.h>

#include <vector>

#include "libalgorithm/camera_util.h"
#include "libalgorithm/effect_pipeline.h"

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr std::size_t kLuma = std::size_t{kWidth} * kHeight;

void rotateFrame(benchmark::State& state) {
  const std::vector<uint8_t> src(kLuma * 3 / 2, 100);
  std::vector<uint8_t> dst(src.size());
  for (auto _ : state) {
    CameraUtil::rotateYUV(src.data(), dst.data(), kHeight, kWidth,
                          static_cast<int>(state.range(0)));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(rotateFrame)->Arg(90)->Arg(180)->Arg(270);

void road(benchmark::State& state, const char* effect) {
  std::vector<uint8_t> frame(kLuma * 3 / 2, 100);
  for (auto _ : state) {
    KAVRO_PrettyEffect_Function(effect, nullptr, frame.data(), frame.data() + kLuma, kHeight,
                                kWidth, kWidth, kWidth);
  }
}
BENCHMARK_CAPTURE(road, passThrough, "sepia")->UseRealTime();
BENCHMARK_CAPTURE(road, PrettySweet, "PrettySweet")->UseRealTime();

}  // namespace
