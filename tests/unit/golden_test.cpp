// A checksum of every image routine's bytes over fixed inputs, the same on every machine and vector
// target. golden_sums.txt has the recorded ones; scripts/golden records them anew.
#include <fstream>
#include <functional>
#include <iomanip>
#include <map>

#include "catalogue/operations.h"
#include "codec/jpeg_bridge.h"
#include "device_root.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/yuv_convert.h"
#include "log_capture.h"
#include "vector_targets.h"

namespace {

constexpr std::pair<int, int> kSizes[] = {
    {64, 48}, {34, 70}, {150, 38}};  // whole vectors, tails, both ways
constexpr int kOverlayWidth = 45, kOverlayHeight = 26;

/// Reads `in` and writes `out`, each width x height x 4 bytes.
using Run = std::function<void(uint8_t* in, uint8_t* out, int width, int height)>;

/// Bytes, as a pointer to a routine's pixels.
struct Pixels {
  uint8_t* bytes;
  operator uint8_t*() const { return bytes; }
  operator uint32_t*() const { return reinterpret_cast<uint32_t*>(bytes); }
};

template <auto kRoutine>
void decoded(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(Pixels{out}, in, in + w * h, w, h, w, w);
}

template <auto kRoutine>
void encoded(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(Pixels{in}, out, out + w * h, w, h, w, w);
}

template <auto kRoutine>  // a strip callback
void strip(uint8_t* in, uint8_t* out, int w, int h) {
  const YuvStripDesc yuvIn{in, in + w * h, w, h, w, w};
  const RgbStripDesc rgbIn{in, w, h, w, w, 3, 22, 0, nullptr, 0, 0};
  YuvStripDesc yuvOut{out, out + w * h, w, h, w, w};
  RgbStripDesc rgbOut{out, w, h, w, w, 3, 22, 0, nullptr, 0, 0};
  kRoutine(kRoutine == &YUV2RGB ? static_cast<const void*>(&yuvIn) : &rgbIn, nullptr,
           kRoutine == &RGB2YUV ? static_cast<void*>(&yuvOut) : &rgbOut);
}

void fetch(void* in, int index, int* red, int* green, int* blue) {
  const uint8_t* pixel = static_cast<uint8_t*>(in) + index * 4;
  *red = pixel[2], *green = pixel[1], *blue = pixel[0];
}

void pulled(uint8_t* in, uint8_t* out, int w, int h) {
  decodeARGB2YUV420P(in, fetch, out, out + w * h, w, h, w);
}

void toJpeg(uint8_t* in, uint8_t* out, int w, int h) {
  const auto jpeg = alg::argbToJpeg(in, w, h, 75);
  std::copy_n(jpeg->bytes.get(), jpeg->size, out);
}

void throughJpeg(uint8_t* in, uint8_t* out, int w, int h) {
  const auto jpeg = alg::argbToJpeg(in, w, h, 75);
  std::copy_n(alg::jpegToArgb(jpeg->bytes.get(), jpeg->size)->pixels.get(), w * h * 4, out);
}

void pipeline(const std::string& name, const uint8_t* in, uint8_t* out, int w, int h) {
  std::copy_n(in, w * h * 3 / 2, out);
  KAVRO_PrettyEffect_Function(name.c_str(), "", out, out + w * h, h, w, w, w);
}

/// The sizes of results that have others than their sources.
void setSizes(const alg::Operation& row, alg::Call& call) {
  const int w = call.width, h = call.height;
  alg::setResultSize(row, call);
  if (row.resultSize == alg::ResultSize::kChosen) {
    call.resultWidth = w, call.resultHeight = h, call.width = w / 2, call.height = h / 3 * 2;
  } else if (row.pixels == alg::Pixels::kFrame) {  // sizes are the result's
    std::swap(call.width, call.resultWidth), std::swap(call.height, call.resultHeight);
  }
}

/// An operation at its presets with one noise for all pictures; blends find the source's bytes
/// backwards.
void operate(const alg::Operation& row, uint8_t* in, uint8_t* out, int w, int h) {
  static const Bytes pictures = noise(150 * 70 * 4, 3);
  alg::Call call = alg::presetCall(row);
  call.src = in, call.dst = out, call.width = w, call.height = h;
  call.pictures[0] = call.pictures[1] = {pictures.data(), kOverlayWidth, kOverlayHeight};
  setSizes(row, call);
  if (row.family == alg::Family::kBlend) std::reverse_copy(in, in + w * h * 4, out);
  if (row.pixels != alg::Pixels::kInts) return row.run(call);
  std::vector<int> ints(in, in + w * h * 3);
  call.src = call.dst = reinterpret_cast<uint8_t*>(ints.data());
  row.run(call);
  std::copy(ints.begin(), ints.end(), out);
}

std::map<std::string, Run> routines() {
  std::map<std::string, Run> rows;
  for (const alg::Operation* row : alg::operations()) {
    rows[row->routine] = std::bind_front(operate, std::cref(*row));
  }
  // What is no operation.
  rows.insert({{"decodeARGB2YUV420P", pulled},
               {"JPEG2ARGB", throughJpeg},
               {"ARGB2JPEG", toJpeg},
               {"decodeYUV2ARGB_LUT", decoded<decodeYUV2ARGB_LUT>},
               {"decodeYVU2ARGB_OpenGL", decoded<decodeYVU2ARGB_OpenGL>},
               {"decodeYUV2ARGB_jni", decoded<decodeYUV2ARGB_jni>},
               {"decodeARGB2YUV_OpenGL", encoded<decodeARGB2YUV_OpenGL>},
               {"decodeARGB2YVU_OpenGL", encoded<decodeARGB2YVU_OpenGL>},
               {"decodeARGB2YUV_jni", encoded<decodeARGB2YUV_jni>},
               {"YUV2RGB", strip<YUV2RGB>},
               {"RGB2YUV", strip<RGB2YUV>},
               {"EffectFunction", strip<EffectFunction>}});
  for (const alg::Operation* row : alg::operations()) {
    if (row->pipeline.name == nullptr) continue;
    const std::string name = row->pipeline.name;
    rows["KAVRO_PrettyEffect_Function " + name] = std::bind_front(pipeline, name);
  }
  return rows;
}

/// 64-bit FNV-1a.
uint64_t sum(std::span<const uint8_t> bytes, uint64_t hash = 0xcbf29ce484222325) {
  for (const uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001b3;
  return hash;
}

std::string sums() {
  const DeviceRoot root;
  root.writePictures(kOverlayWidth, kOverlayHeight);
  std::ostringstream lines;
  for (const auto& [name, run] : routines()) {
    uint64_t hash = sum({});
    for (const auto& [width, height] : kSizes) {
      const int bytes = width * height * 4;
      Bytes in = noise(bytes), out(asSize(bytes));
      run(in.data(), out.data(), width, height);
      hash = sum(out, hash);
    }
    lines << name << " " << std::hex << std::setfill('0') << std::setw(16) << hash << "\n";
  }
  takeLog();
  return lines.str();
}

TEST(Golden, EveryRoutineGivesTheRecordedBytes) {
  if (const char* path = std::getenv("ALGORITHM_RECORD_GOLDEN_SUMS")) {
    std::ofstream(path) << sums();
  }
  std::ostringstream recorded;
  recorded << std::ifstream(GOLDEN_SUMS).rdbuf();
  onEachTarget([&] { EXPECT_EQ(sums(), recorded.str()); });
}

}  // namespace
