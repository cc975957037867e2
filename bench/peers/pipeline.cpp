// The whole pipeline of an effect: a frame in place on two cores, preview frames, and a JPEG file.
#include <cstdio>  // which jpeglib.h takes as given

#include <jpeglib.h>
#include <libyuv.h>

#include <array>
#include <thread>

#include "bench/measure.h"
#include "bench/peers/duel.h"
#include "catalogue/operations.h"
#include "codec/jpeg_bridge.h"
#include "effect/pipeline.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {
namespace {

constexpr std::size_t frameBytes(const Size& size) {
  return pixelsOf(size.width, size.height) * 3 / 2;
}

constexpr Size kPhoto{kWidth, kHeight}, kPreview{640, 480};
constexpr std::size_t kFrame = frameBytes(kPhoto);
constexpr int kQuality = 95;
constexpr double kCurvesOnFrame = per_pixel::kDecode + per_pixel::kCurves + per_pixel::kEncode;

using ColorTable = std::array<uint8_t, 1024>;

/// An effect's curves by channel, found by running it: B, G, R and unused for each value.
ColorTable tableOf(decltype(&PrettySweet) effect) {
  ColorTable table{};
  for (std::size_t v = 0; v < 256; ++v) {
    const auto byte = static_cast<uint8_t>(v);
    uint8_t red_green_blue[3] = {byte, byte, byte};
    effect(red_green_blue, &table[4 * v], 1, 1);  // crossed: B, G, R
  }
  return table;
}

/// Rows first to last of an NV21 frame, in place: bands of 8 rows, which stay in the cache. libyuv
/// maps by table 4-byte pixels only.
void libyuvBands(uint8_t* frame, const Size& size, int first, int last, const uint8_t* table) {
  constexpr int kBand = 8;
  const int width = size.width, pitch = 4 * width;
  Bytes pixels(pixelsOf(pitch, kBand));
  for (int row = first; row < last; row += kBand) {
    const int rows = std::min(kBand, last - row);
    uint8_t* y = frame + pixelsOf(width, row);
    uint8_t* vu = frame + pixelsOf(width, size.height) + pixelsOf(width, row / 2);
    libyuv::NV21ToARGB(y, width, vu, width, pixels.data(), pitch, width, rows);
    libyuv::RGBColorTable(pixels.data(), pitch, table, 0, 0, width, rows);
    libyuv::ARGBToNV21(pixels.data(), pitch, y, width, vu, width, width, rows);
  }
}

void runPipeline(const char* effect, uint8_t* frame, const Size& size) {
  KAVRO_PrettyEffect_Function(effect, "", frame, frame + pixelsOf(size.width, size.height),
                              size.height, size.width, size.width, size.width);
}

Duel pipeline(Scene& s) {
  Duel duel{"pipeline with PrettySweet, pool on 2 cores",
            2.0,
            2 * kFrame,
            kFrame,
            2.5,
            [&s] { runPipeline("PrettySweet", s.ours.data(), kPhoto); },
            {{"libyuv NV21ToARGB + RGBColorTable + ARGBToNV21, in bands, 2 threads",
              [&s, table = tableOf(PrettySweet)] {
                constexpr int kHalf = kHeight / 2;
                std::jthread lower(libyuvBands, s.theirs.data(), kPhoto, kHalf, kHeight,
                                   table.data());
                libyuvBands(s.theirs.data(), kPhoto, 0, kHalf, table.data());
              }}},
            &s.frame,
            Clock::kWall};
  duel.operations = kCurvesOnFrame;
  return duel;
}

// Previews ---------------------------------------------------------------------------------------

const Bytes& previewFrame() {
  static const Bytes kPreviewFrame = [] {
    Bytes words = picture(kPreview.width, kPreview.height, 4), frame(frameBytes(kPreview));
    decodeARGB2YVU_OpenGL(reinterpret_cast<uint32_t*>(words.data()), frame.data(),
                          frame.data() + pixelsOf(kPreview.width, kPreview.height), kPreview.width,
                          kPreview.height, kPreview.width, kPreview.width);
    return frame;
  }();
  return kPreviewFrame;
}

Frame frameOf(Bytes& bytes, const Size& size) {
  return {bytes.data(), bytes.data() + pixelsOf(size.width, size.height),
          size.width,   size.height,
          size.width,   size.width};
}

Duel preview(Scene& s, const char* effect, double required, double operations, Peer peer) {
  return {.work = std::string("preview frame with ") + effect,
          .required = required,
          .moved = 2 * frameBytes(kPreview),
          .result = frameBytes(kPreview),
          .tolerance = 2.5,
          .ours = [&s, effect] { runPipeline(effect, s.ours.data(), kPreview); },
          .peers = {std::move(peer)},
          .before = &previewFrame(),
          .runs = 20,
          .operations = operations,
          .pixels = pixelsOf(kPreview.width, kPreview.height)};
}

Duel sweetPreview(Scene& s) {
  return preview(s, "PrettySweet", 0.8, kCurvesOnFrame,
                 {"libyuv NV21ToARGB + RGBColorTable + ARGBToNV21, in bands",
                  [&s, table = tableOf(PrettySweet)] {
                    libyuvBands(s.theirs.data(), kPreview, 0, kPreview.height, table.data());
                  }});
}

/// Another effect, held against PrettySweet. What it gives must be what its definition gives, and
/// not what a frame gets whose effect lacks its picture.
Duel besideSweet(Scene& s, const Operation& operation) {
  const char* effect = operation.pipeline.name;
  const bool overlaid = operation.softLight != nullptr;
  // At most 1.25 times as long, under an overlay 2.5 times.
  Duel duel = preview(
      s, effect, overlaid ? 0.4 : 0.8, kCurvesOnFrame + (overlaid ? per_pixel::kSoftLight : 0),
      {"ours with PrettySweet", [&s] { runPipeline("PrettySweet", s.theirs.data(), kPreview); }});
  duel.tolerance = 0;
  duel.difference = [&s, effect] {
    Bytes defined = previewFrame(), passed = previewFrame();
    runEffect({.name = effect}, frameOf(defined, kPreview), Passes::kThree);
    runEffect({.name = "no effect"}, frameOf(passed, kPreview), Passes::kThree);
    return defined == passed ? Nearness{.most = 255, .sum = 255, .bytes = 1}
                             : difference(s.ours, defined, defined.size());
  };
  return duel;
}

// JPEG -------------------------------------------------------------------------------------------

struct JpegFile {
  Block bytes;
  std::size_t size = 0;
};

/// The application's way: pixels, frame, effect, pixels.
void throughPipeline(const JpegFile& from, JpegFile& to) {
  auto photo = jpegToArgb(from.bytes.get(), from.size);
  static Bytes frame(kFrame);
  auto* words = reinterpret_cast<uint32_t*>(photo->pixels.get());
  uint8_t* chroma = frame.data() + kPixels;
  decodeARGB2YVU_OpenGL(words, frame.data(), chroma, kWidth, kHeight, kWidth, kWidth);
  runPipeline("PrettySweet", frame.data(), kPhoto);
  decodeYVU2ARGB_OpenGL(words, frame.data(), chroma, kWidth, kHeight, kWidth, kWidth);
  auto jpeg = argbToJpeg(photo->pixels.get(), kWidth, kHeight, kQuality);
  to = {std::move(jpeg->bytes), jpeg->size};
}

/// The codec's floor: row by row from decoder to encoder, through a table for each channel.
void throughCodec(const JpegFile& from, JpegFile& to, const uint8_t* table) {
  jpeg_error_mgr errors;
  jpeg_decompress_struct in;
  jpeg_compress_struct out;
  in.err = out.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&in);
  jpeg_create_compress(&out);
  jpeg_mem_src(&in, from.bytes.get(), static_cast<unsigned long>(from.size));
  jpeg_read_header(&in, TRUE);
  in.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&in);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&out, &bytes, &size);
  out.image_width = in.output_width;
  out.image_height = in.output_height;
  out.input_components = 3;
  out.in_color_space = JCS_EXT_BGR;
  jpeg_set_defaults(&out);
  jpeg_set_quality(&out, kQuality, TRUE);
  jpeg_start_compress(&out, TRUE);
  Bytes pixels(std::size_t{kWidth} * 3);
  JSAMPROW row = pixels.data();
  while (in.output_scanline < in.output_height) {
    jpeg_read_scanlines(&in, &row, 1);
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
      for (std::size_t c = 0; c < 3; ++c) row[i + c] = table[std::size_t{4} * row[i + c] + c];
    }
    jpeg_write_scanlines(&out, &row, 1);
  }
  jpeg_finish_compress(&out);
  jpeg_destroy_compress(&out);
  jpeg_finish_decompress(&in);
  jpeg_destroy_decompress(&in);
  to = {Block(bytes), size};
}

Duel jpegFile(Scene& s) {
  static JpegFile source, ours, theirs;
  auto jpeg = argbToJpeg(s.words.data(), kWidth, kHeight, kQuality);
  source = {std::move(jpeg->bytes), jpeg->size};
  const auto nearness = [] {
    const auto a = jpegToArgb(ours.bytes.get(), ours.size);
    const auto b = jpegToArgb(theirs.bytes.get(), theirs.size);
    return difference({a->pixels.get(), a->pixels.get() + 4 * kPixels},
                      {b->pixels.get(), b->pixels.get() + 4 * kPixels}, 4 * kPixels);
  };
  return {
      .work = "JPEG file -> PrettySweet -> JPEG file, quality 95",
      .required = 0.8,
      .moved = 0,
      .result = 0,
      .tolerance = 3.5,
      .ours = [] { throughPipeline(source, ours); },
      .peers = {{"libjpeg alone, row by row, with tables",
                 [table = tableOf(PrettySweet)] { throughCodec(source, theirs, table.data()); }}},
      .difference = nearness};
}

}  // namespace

std::vector<Duel> pipelineDuels(Scene& s) {
  std::vector<Duel> duels;
  duels.push_back(pipeline(s));
  duels.push_back(sweetPreview(s));
  for (const Operation* operation : operations()) {
    if (!operation->pipeline.runs || operation == &operation::kPrettySweet) continue;
    duels.push_back(besideSweet(s, *operation));
  }
  duels.push_back(jpegFile(s));
  return duels;
}

}  // namespace alg::bench
