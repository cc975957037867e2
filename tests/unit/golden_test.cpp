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

template <auto kRoutine, class Pixels = uint32_t>
void decoded(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(reinterpret_cast<Pixels*>(out), in, in + w * h, w, h, w, w);
}

template <auto kRoutine, class Pixels = uint32_t>
void encoded(uint8_t* in, uint8_t* out, int w, int h) {
  kRoutine(reinterpret_cast<Pixels*>(in), out, out + w * h, w, h, w, w);
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

/// Runs a blend on `out`, which holds the source's bytes backwards.
template <class Blend>
Run blended(Blend blend) {
  return [blend](uint8_t* in, uint8_t* out, int w, int h) {
    std::reverse_copy(in, in + w * h * 4, out);
    blend(in, out, w, h);
  };
}

void lomoFun(uint8_t* in, uint8_t* out, int w, int h) {
  std::vector<int> ints(in, in + w * h * 3);
  LomoFun(ints.data(), ints.data(), w, h);
  std::copy(ints.begin(), ints.end(), out);
}

uint32_t* words(uint8_t* bytes) { return reinterpret_cast<uint32_t*>(bytes); }

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

std::map<std::string, Run> routines() {
  std::map<std::string, Run> rows = {
      {"decodeYUV2ARGB_LUT", decoded<decodeYUV2ARGB_LUT>},
      {"decodeYVU2ARGB_OpenGL", decoded<decodeYVU2ARGB_OpenGL>},
      {"decodeYUV2ARGB_jni", decoded<decodeYUV2ARGB_jni, uint8_t>},
      {"decodeARGB2YUV_OpenGL", encoded<decodeARGB2YUV_OpenGL>},
      {"decodeARGB2YVU_OpenGL", encoded<decodeARGB2YVU_OpenGL>},
      {"decodeARGB2YUV_jni", encoded<decodeARGB2YUV_jni, uint8_t>},
      {"decodeARGB2YUV420P", pulled},
      {"YUV2RGB", strip<&YUV2RGB>},
      {"RGB2YUV", strip<&RGB2YUV>},
      {"EffectFunction", strip<&EffectFunction>},
      {"CameraUtil::rotateYUV90", CameraUtil::rotateYUV90},
      {"CameraUtil::rotateYUV180", CameraUtil::rotateYUV180},
      {"CameraUtil::rotateYUV270", CameraUtil::rotateYUV270},
      {"CameraUtil::rotateYUV", turned<CameraUtil::rotateYUV>},
      {"CameraUtil::rotateARGB90", CameraUtil::rotateARGB90},
      {"CameraUtil::rotateARGB180", CameraUtil::rotateARGB180},
      {"CameraUtil::rotateARGB270", CameraUtil::rotateARGB270},
      {"CameraUtil::rotateARGB", turned<CameraUtil::rotateARGB>},
      {"PrettySweet", PrettySweet},
      {"PrettyNature", PrettyNature},
      {"PrettyBlue", PrettyBlue},
      {"PrettyMoonlight", PrettyMoonlight},
      {"PrettyWhiteDew", PrettyWhiteDew},
      {"PrettyBeautiful", overlaid<PrettyBeautiful>},
      {"PrettyPink", overlaid<PrettyPink>},
      {"PrettyJapan", overlaid<PrettyJapan>},
      {"Temperature", Temperature},
      {"Resize", [](auto* in, auto* out, int w,
                    int h) { Resize(words(out), w, h, words(in), w / 2, h / 3 * 2); }},
      {"ActiveBlur",
       [](auto* in, auto* out, int w, int h) { ActiveBlur(words(out), words(in), 0, w, h); }},
      {"blur", [](auto* in, auto* out, int w, int h) { blur(out, words(in), w, h); }},
      {"CameraUtil::add2Image", blended([](auto* in, auto* out, int w, int h) {
         CameraUtil::add2Image(in, 90, out, 180, unsigned(w * h * 4));
       })},
      {"CameraUtil::add2ImageByBrightness", blended([](auto* in, auto* out, int w, int h) {
         CameraUtil::add2ImageByBrightness(in, out, unsigned(w * h * 4));
       })},
      {"CameraUtil::add2ImageByDarkness", blended([](auto* in, auto* out, int w, int h) {
         CameraUtil::add2ImageByDarkness(in, out, unsigned(w * h * 4));
       })},
      {"CameraUtil::replaceImageContent", blended([](auto* in, auto* out, int w, int h) {
         int rect[] = {1, 2, w - 5, h - 3};
         CameraUtil::replaceImageContent(in, out, w, rect);
       })},
      {"CameraUtil::getBackground", blended([](auto* in, auto* out, int w, int h) {
         const alg::Block background(CameraUtil::getBackground(in, in + 1, out, w * h * 4 - 1));
         std::copy_n(background.get(), w * h * 4 - 1, out);
       })},
      {"CameraUtil::add3ImageByBackground", blended([](auto* in, auto* out, int w, int h) {
         CameraUtil::add3ImageByBackground(out, in, in + 1, w * h * 4 - 1);
       })},
      {"CrossProcess", CrossProcess},
      {"GrayScale", GrayScale},
      {"Sepia", Sepia},
      {"Pink", Pink},
      {"Summer", Summer},
      {"Ocean", Ocean},
      {"negative", negative},
      {"nature", nature},
      {"Lomo", overlaid<Lomo>},
      {"LomoFun", lomoFun},
      {"Fisheye", radial<Fisheye>},
      {"FillLightFix", radial<FillLightFix>},
      {"miniature", miniature},
      {"miniature_r",
       [](auto* in, auto* out, int w, int h) { miniature_r(in, out, w, h, 5, h + 20); }},
      {"Sketch", Sketch},
      {"newsketch", overlaid<newsketch>},
      {"Mosaic", Mosaic},
      {"Emboss", Emboss},
      {"Colorpaint", Colorpaint},
      {"areaeffect", areaeffect},
      {"Prague", [](auto* in, auto* out, int w, int h) { Prague(in, out, w, h, 0); }},
      {"PragueCarton", [](auto* in, auto* out, int w, int h) { PragueCarton(in, out, w, h, 0); }},
      {"otherTest", otherTest},
      {"JPEG2ARGB", throughJpeg},
      {"ARGB2JPEG", toJpeg}};
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
  for (const ref::Effect& effect : ref::kEffects) {
    for (const std::string& name : {effect.picture, effect.landscapePicture}) {
      if (!name.empty()) root.writePicture(name, kOverlayWidth, kOverlayHeight);
    }
  }
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

/// The lines of `text` that are not among the other's.
std::string linesBeyond(const std::string& text, const std::string& other) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (("\n" + other).find("\n" + line + "\n") == std::string::npos) result += line + "\n";
  }
  return result;
}

TEST(Golden, EveryRoutineGivesTheRecordedBytes) {
  if (const char* path = std::getenv("ALGORITHM_RECORD_GOLDEN_SUMS")) {
    std::ofstream(path) << sums();
  }
  std::ostringstream recorded;
  recorded << std::ifstream(GOLDEN_SUMS).rdbuf();
  onEachTarget([&] {
    const std::string got = sums();
    EXPECT_EQ(linesBeyond(got, recorded.str()), linesBeyond(recorded.str(), got));
  });
}

}  // namespace
