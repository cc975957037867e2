// A checksum of every image routine's bytes over fixed inputs, the same on every machine and vector
// target. golden_sums.txt has the recorded ones; scripts/golden records them anew.
#include <fstream>
#include <functional>
#include <iomanip>
#include <map>

#include "codec/jpeg_bridge.h"
#include "device_root.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/classic_effects.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"
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

template <auto kRoutine>
void turned(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, w, h, 270);
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

template <auto kRoutine>
void overlaid(uint8_t* in, uint8_t* out, int w, int h) {
  static Bytes overlay = noise(kOverlayWidth * kOverlayHeight * 4, 3);
  kRoutine(in, out, w, h, overlay.data(), kOverlayWidth, kOverlayHeight);
}

template <auto kRoutine>
void radial(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(in, out, 0.8f, w, h);
}

/// Runs a blend of n bytes on `out`, which holds the source's bytes backwards.
template <class Blend>
Run blended(Blend blend) {
  return [blend](uint8_t* in, uint8_t* out, int w, int h) {
    std::reverse_copy(in, in + w * h * 4, out);
    blend(in, out, unsigned(w * h * 4));
  };
}

void lomoFun(uint8_t* in, uint8_t* out, int w, int h) {
  std::vector<int> ints(in, in + w * h * 3);
  LomoFun(ints.data(), ints.data(), w, h);
  std::copy(ints.begin(), ints.end(), out);
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

void road(const std::string& name, const uint8_t* in, uint8_t* out, int w, int h) {
  std::copy_n(in, w * h * 3 / 2, out);
  KAVRO_PrettyEffect_Function(name.c_str(), "", out, out + w * h, h, w, w, w);
}

/// Adds routines under their names as they are written, without a template around them.
void add(std::map<std::string, Run>& rows, const std::string& names,
         std::initializer_list<Run> runs) {
  std::istringstream list(names);
  for (const Run& run : runs) {
    std::string name;
    std::getline(list >> std::ws, name, ',');
    const std::size_t from = name.find('<') + 1;
    rows[name.substr(from, name.find('>') - from)] = run;
  }
}
#define ADD(rows, ...) add(rows, #__VA_ARGS__, {__VA_ARGS__})

std::map<std::string, Run> routines() {
  std::map<std::string, Run> rows = {
      {"decodeARGB2YUV420P", pulled},
      {"LomoFun", lomoFun},
      {"JPEG2ARGB", throughJpeg},
      {"ARGB2JPEG", toJpeg},
      {"Resize", [](auto* in, auto* out, int w,
                    int h) { Resize(Pixels{out}, w, h, Pixels{in}, w / 2, h / 3 * 2); }},
      {"ActiveBlur",
       [](auto* in, auto* out, int w, int h) { ActiveBlur(Pixels{out}, Pixels{in}, 0, w, h); }},
      {"blur", [](auto* in, auto* out, int w, int h) { blur(out, Pixels{in}, w, h); }},
      {"miniature_r",
       [](auto* in, auto* out, int w, int h) { miniature_r(in, out, w, h, 5, h + 20); }},
      {"Prague", [](auto* in, auto* out, int w, int h) { Prague(in, out, w, h, 0); }},
      {"PragueCarton", [](auto* in, auto* out, int w, int h) { PragueCarton(in, out, w, h, 0); }},
      {"CameraUtil::add2Image", blended([](auto* in, auto* out, unsigned n) {
         CameraUtil::add2Image(in, 90, out, 180, n);
       })},
      {"CameraUtil::add2ImageByBrightness", blended(CameraUtil::add2ImageByBrightness)},
      {"CameraUtil::add2ImageByDarkness", blended(CameraUtil::add2ImageByDarkness)},
      {"CameraUtil::getBackground", blended([](auto* in, auto* out, unsigned n) {
         const alg::Block background(CameraUtil::getBackground(in, in + 1, out, int(n) - 1));
         std::copy_n(background.get(), n - 1, out);
       })},
      {"CameraUtil::add3ImageByBackground", blended([](auto* in, auto* out, unsigned n) {
         CameraUtil::add3ImageByBackground(out, in, in + 1, int(n) - 1);
       })},
      {"CameraUtil::replaceImageContent", [](auto* in, auto* out, int w, int h) {
         std::reverse_copy(in, in + w * h * 4, out);
         int rect[] = {1, 2, w - 5, h - 3};
         CameraUtil::replaceImageContent(in, out, w, rect);
       }}};
  ADD(rows, CrossProcess, GrayScale, Sepia, Pink, Summer, Ocean, negative, nature, miniature,
      Sketch, Mosaic, Emboss, Colorpaint, areaeffect, otherTest, Temperature, PrettySweet,
      PrettyNature, PrettyBlue, PrettyMoonlight, PrettyWhiteDew, overlaid<PrettyBeautiful>,
      overlaid<PrettyPink>, overlaid<PrettyJapan>, overlaid<Lomo>, overlaid<newsketch>,
      radial<Fisheye>, radial<FillLightFix>, CameraUtil::rotateYUV90, CameraUtil::rotateYUV180,
      CameraUtil::rotateYUV270, CameraUtil::rotateARGB90, CameraUtil::rotateARGB180,
      CameraUtil::rotateARGB270, turned<CameraUtil::rotateYUV>, turned<CameraUtil::rotateARGB>,
      decoded<decodeYUV2ARGB_LUT>, decoded<decodeYVU2ARGB_OpenGL>, decoded<decodeYUV2ARGB_jni>,
      encoded<decodeARGB2YUV_OpenGL>, encoded<decodeARGB2YVU_OpenGL>, encoded<decodeARGB2YUV_jni>,
      strip<YUV2RGB>, strip<RGB2YUV>, strip<EffectFunction>);
  for (std::size_t id = 0; id < 28; ++id) {
    rows["KAVRO_PrettyEffect_Function " + ref::kEffects[id].name] =
        std::bind_front(road, ref::kEffects[id].name);
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
  for (const std::string name : {"colorpaint.png", "front.png", "effect.png"}) {
    Bytes pixels = noise(kOverlayWidth * kOverlayHeight * 4, int(name.size()));
    for (std::size_t i = 3; i < pixels.size(); i += 64) pixels[i] = 0;
    root.writePng(name, kOverlayWidth, kOverlayHeight, PNG_COLOR_TYPE_RGBA, 8, pixels);
  }
  std::ostringstream lines;
  for (const auto& [name, run] : routines()) {
    uint64_t hash = sum({});
    for (const auto& [width, height] : kSizes) {
      const int bytes = width * height * 4;
      Bytes in = noise(bytes), out(zu(bytes));
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
