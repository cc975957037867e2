// JPEG, beside loops that do nothing but call the codec, a row at a time. Ours and the loop take
// turns, and the best of each counts: only the ratios say something.
#include <benchmark/benchmark.h>
// jpeglib.h needs these.
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <functional>
#include <map>

#include "bench/measure.h"
#include "bench/picture.h"
#include "codec/jpeg_bands.h"
#include "kernels/curve_map.h"
#include "platform/jpeg.h"

namespace alg::bench {
namespace {

constexpr Size k12MP{4000, 3000};
constexpr int kQuality = 92;

const EncodedJpeg& photo() {
  static const EncodedJpeg file = [] {
    const Bytes pixels = picture(k12MP.width, k12MP.height, 4);
    return encodeJpeg(pixels.data(), k12MP.width, k12MP.height, kQuality).value();
  }();
  return file;
}

/// Decodes row by row; `row` says where to.
void bareDecode(J_COLOR_SPACE pixels, const std::function<uint8_t*(int y)>& row) {
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, photo().bytes.get(), photo().size);
  jpeg_read_header(&codec, TRUE);
  codec.out_color_space = pixels;
  jpeg_start_decompress(&codec);
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW line = row(static_cast<int>(codec.output_scanline));
    jpeg_read_scanlines(&codec, &line, 1);
    row(-1);
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
}

/// Decodes and encodes row by row.
void bareTranscode(Bytes& out) {
  // Stores to aligned rows would go past the caches, and cost a half more.
  alignas(64) static uint8_t memory[1 + 3 * k12MP.width];
  uint8_t* const row = memory + 1;
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* to = out.data();
  unsigned long size = out.size();
  jpeg_mem_dest(&codec, &to, &size);
  codec.image_width = k12MP.width, codec.image_height = k12MP.height;
  codec.in_color_space = JCS_RGB, codec.input_components = 3;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, kQuality, TRUE);
  jpeg_start_compress(&codec, TRUE);
  bareDecode(JCS_RGB, [&](int y) {
    JSAMPROW line = row;
    if (y < 0) jpeg_write_scanlines(&codec, &line, 1);
    return row;
  });
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
}

/// The work of the Pretty filters' curves, without their change: both ways are to encode the same.
void throughCurves(Bytes& out, bool overlap) {
  const auto nearlySame = [](int v) { return static_cast<uint8_t>(v == 1 ? 0 : v); };
  static const Curves curves = makeCurves(nearlySame, nearlySame, nearlySame);
  JpegBytes input({photo().bytes.get(), photo().size});
  JpegBuffer output(out);
  transcodeJpeg(input, output,
                {.source = JpegPixels::kRgb,
                 .result = JpegPixels::kBgr,
                 .quality = kQuality,
                 .overlap = overlap},
                [](const JpegBand& band) {
                  mapCurves(band.src, band.dst, band.width, band.rows, curves);
                  return true;
                });
}

struct Way {
  const char* name;
  std::function<void()> run;
};

/// Measures the first way's CPU time and shows the others' CPU and passed time as multiples of it.
void takeTurns(benchmark::State& state, const std::vector<Way>& ways) {
  std::map<std::string, double> cpu, wall;
  for (auto _ : state) {
    for (const Way& way : ways) {
      const double spent = seconds(CLOCK_PROCESS_CPUTIME_ID), begun = seconds(CLOCK_MONOTONIC);
      way.run();
      const double each = seconds(CLOCK_PROCESS_CPUTIME_ID) - spent;
      const double passed = seconds(CLOCK_MONOTONIC) - begun;
      if (&way == &ways.front()) state.SetIterationTime(each);
      cpu[way.name] = cpu.contains(way.name) ? std::min(cpu[way.name], each) : each;
      wall[way.name] = wall.contains(way.name) ? std::min(wall[way.name], passed) : passed;
    }
  }
  for (const Way& way : ways) {
    if (&way == &ways.front()) continue;
    state.counters[way.name + std::string("_cpu")] = cpu[way.name] / cpu[ways.front().name];
    state.counters[way.name + std::string("_wall")] = wall[way.name] / wall[ways.front().name];
  }
}

void decode(benchmark::State& state) {
  static Bytes out(4 * pixelsOf(k12MP.width, k12MP.height));
  const std::size_t stride = std::size_t{4} * k12MP.width;
  takeTurns(state,
            {{"codec",
              [&] {
                uint8_t* at = out.data();
                bareDecode(JCS_EXT_BGRA,
                           [&](int y) { return at + (y < 0 ? 0 : stride * size_t(y)); });
              }},
             {"used",
              [&] {
                JpegBytes input({photo().bytes.get(), photo().size});
                JpegDamage damage;
                decodeJpegInto(input, 1, {out.data(), k12MP.width, k12MP.height, stride}, damage);
              }},
             {"fresh", [] {
                decodeJpeg({photo().bytes.get(), photo().size});
              }}});
}

void transcode(benchmark::State& state) {
  static Bytes out(2 * photo().size);
  takeTurns(state, {{"codec", [] { bareTranscode(out); }},
                    {"alone", [] { throughCurves(out, false); }},
                    {"overlapped", [] { throughCurves(out, true); }}});
}

}  // namespace

void addJpeg() {
  const auto add = [](const char* name, void (*run)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond)->UseManualTime();
  };
  add("JPEG decode/12MP", decode);
  add("JPEG through curves/12MP", transcode);
}

}  // namespace alg::bench
