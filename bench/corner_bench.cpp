// The radial effects on two megapixels beside the walk as it is defined: one pixel and its mirror
// images at a time. Compare figures of one run: bytes/s counts what is read and written.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "libalgorithm/classic_effects.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr float kRadius = 0.8f;

using Pixels = std::vector<unsigned char>;

int root(int t) {
  const int t2 = t * t;
  const int t2q = t2 >> 12;
  return (((t >> 1) + 4095 - (t2 >> 15) + ((t2q * t) >> 16) - ((t2q * t2q * 5) >> 19)) * 2896) >>
         12;
}

/// The landscape lens: aspect 4096, reach 11264, zoom 4147.
void plainFisheye(unsigned char* src, unsigned char* dst, float, int w, int h) {
  for (int y = 0; y <= h >> 1; ++y) {
    const int ny = ((y - (h >> 1)) * ((1 << 24) / h)) >> 12;
    const int yy = (((h << 12) / w) * ny) >> 12;
    int sum = -(w >> 1) * ((1 << 24) / w);
    for (int x = 0; x <= w >> 1; ++x, sum += (1 << 24) / w) {
      const int nx = sum >> 12;
      const int r2 = (yy * yy + nx * nx) >> 12;
      const int r = root(2 * r2 - 4095);
      const int u = 4095 - r;
      const int u2 = (u * u) >> 12;
      const int inverse = 8190 - r + u2 + ((u2 * u) >> 12) + ((u2 * u2) >> 12);
      const int a = (((root(2 * (1782 - r2) - 4095) * inverse) >> 12) * 11264) >> 12;
      const int v = (a * a) >> 14;
      const int arc = ((((v * a) >> 12) * 221) - (((v * v) >> 10) * 11) - v * 1697 +
                       ((a * 3105) >> 1) + 1868069) >>
                      11;
      const int factor = ((6434 - arc) * ((inverse * 4147) >> 12)) >> 12;
      const int sx = (std::max(((factor * nx) >> 12) + 2048, 0) * w) >> 12;
      const int sy = (std::max(((factor * ny) >> 12) + 2048, 0) * h) >> 12;
      const auto copy = [&](int toY, int toX, int fromY, int fromX) {
        for (int k = 0; k < 3; ++k) {
          dst[(toY * w + toX) * 3 + k] = src[(fromY * w + fromX) * 3 + 2 - k];
        }
      };
      copy(y, x, sy, sx);
      copy(h - 1 - y, x, h - 1 - sy, sx);
      copy(y, w - 1 - x, sy, w - 1 - sx);
      copy(h - 1 - y, w - 1 - x, h - 1 - sy, w - 1 - sx);
    }
  }
}

void plainFillLight(unsigned char* src, unsigned char* dst, float radius, int w, int h) {
  const int hh = h >> 1;
  const int hw = w >> 1;
  const int norm = (1 << 30) / (hh * hh + hw * hw);
  const int full = static_cast<int>(radius * 32768.0f);
  const int inverse = static_cast<int>(1.0 / static_cast<double>(radius + radius) * 32768.0);
  for (int y = 0; y <= hh; ++y) {
    for (int x = 0; x <= hw; ++x) {
      const int d = (((y - hh) * (y - hh) + (x - hw) * (x - hw)) * norm) >> 15;
      const int d2 = (d * d) >> 15;
      const int d4 = (d2 * d2) >> 15;
      const int p = 2 * (((d * 23837) >> 15) + 3401 - ((d2 * 22035) >> 15) +
                         ((((d2 * d) >> 15) * 18134) >> 15) - ((d4 * 8790) >> 15) +
                         ((((d * d4) >> 15) * 1837) >> 15));
      const int reach = std::max(full, p) + (full >> 2);
      const int weight = std::max(32767 - ((reach * inverse) >> 15), 0);
      const int k = static_cast<int>(((32767 - weight) * 8 - 163835) * 0.33333);
      const int red = ((k * 122) >> 15) + ((weight * 255) >> 15);
      const int green = ((k * 74) >> 15) + ((weight * 33) >> 13);
      const int blue = ((k * 97) >> 15) + ((weight * 97) >> 15);
      const auto light = [&](int atY, int atX) {
        const int i = (atY * w + atX) * 3;
        dst[i] = static_cast<unsigned char>(std::min(src[i + 2] + red, 255));
        dst[i + 1] = static_cast<unsigned char>(std::min(src[i + 1] + green, 255));
        dst[i + 2] = static_cast<unsigned char>(std::min(src[i] + blue, 255));
      };
      light(y, x);
      light(h - 1 - y, x);
      light(y, w - 1 - x);
      light(h - 1 - y, w - 1 - x);
    }
  }
}

void corners(benchmark::State& state, decltype(Fisheye)* effect, decltype(Fisheye)* reference) {
  Pixels src(std::size_t{kWidth} * kHeight * 3);
  for (std::size_t i = 0; i < src.size(); ++i) {
    src[i] = static_cast<unsigned char>(i * 37 + (i >> 9));
  }
  Pixels dst(src.size());
  Pixels expected(src.size());
  reference(src.data(), expected.data(), kRadius, kWidth, kHeight);
  for (auto _ : state) {
    effect(src.data(), dst.data(), kRadius, kWidth, kHeight);
    benchmark::ClobberMemory();
  }
  if (dst != expected) {
    state.SkipWithError("not the defined bytes");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(2 * src.size()));
}
BENCHMARK_CAPTURE(corners, fisheye, Fisheye, plainFisheye);
BENCHMARK_CAPTURE(corners, fisheyePlain, plainFisheye, plainFisheye);
BENCHMARK_CAPTURE(corners, fillLight, FillLightFix, plainFillLight);
BENCHMARK_CAPTURE(corners, fillLightPlain, plainFillLight, plainFillLight);

}  // namespace
