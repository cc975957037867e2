// The effect pipeline against the reference: names, frame sizes, strides and picture sizes.
#include <png.h>

#include "effect/pipeline.h"
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/picture_folder.h"

namespace {

ref::Effect effectNamed(const std::string& name) {
  const auto known = std::ranges::find(ref::kEffects, name, &ref::Effect::name);
  return known != ref::kEffects.end() ? *known : ref::Effect{name, 1000, 4, "", ""};
}

/// Lays an opaque picture of any size, or none, into the folder.
ref::Picture choosePicture(Input& input, const PictureFolder& folder) {
  folder.remove();
  ref::Picture picture{input.side(400) - 1, 0, {}};
  if (picture.width == 0) return picture;
  picture.height = input.side(4000 / picture.width);
  picture.rgba = input.fill(picture.width * picture.height * 4);
  for (std::size_t i = 3; i < picture.rgba.size(); i += 4) picture.rgba[i] = 255;
  png_image png{};
  png.version = PNG_IMAGE_VERSION, png.format = PNG_FORMAT_RGBA, png.flags = PNG_IMAGE_FLAG_FAST;
  png.width = png_uint_32(picture.width), png.height = png_uint_32(picture.height);
  const auto* pixels = picture.rgba.data();
  expectThat(png_image_write_to_file(&png, folder.file().c_str(), 0, pixels, 0, nullptr) != 0,
             "the picture can be written");
  return picture;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const PictureFolder folder;
  Input input(data, size);
  const int known = input.byte() % 40;
  const std::string typed = input.text(30);
  const ref::Effect effect = known < ref::kKnownNames
                                 ? ref::kEffects[asSize(known)]
                                 : effectNamed(typed.c_str());  // up to its first zero
  const int most = input.byte() % 8 == 1 ? 120000 : 10000;  // large ones have several bands a strip
  const int width = input.side(5000), height = input.side(std::min(most / width, 1500));
  const int yPad = input.upTo(40), uvPad = input.byte() % 4 == 0 ? input.upTo(40) : 0;
  const ref::Frame f{width, height, width + yPad, width + uvPad};
  const ref::Picture picture = choosePicture(input, folder);
  const Bytes luma = input.fill(f.yStride * (height - 1) + width);
  const Bytes chroma = input.fill(ref::chromaBytes(f));

  // Odd frames with gaps between chroma rows have no defined bytes, but stay inside all the same.
  const bool defined = (width % 2 == 0 && height % 2 == 0) || uvPad == 0;
  Bytes expectedLuma = luma, expectedChroma = chroma;
  if (defined) {
    ref::pipeline(effect, picture.width > 0 ? &picture : nullptr, expectedLuma.data(),
                  expectedChroma.data(), f);
  }
  for (const alg::Passes passes : {alg::Passes::kFewest, alg::Passes::kThree}) {
    Bytes y = luma, uv = chroma;
    expectThat(alg::runEffect({.name = effect.name.c_str()},
                              {y.data(), uv.data(), width, height, f.yStride, f.uvStride},
                              passes) != alg::Outcome::kNoMemory,
               "the pipeline runs");
    if (!defined) continue;
    expectSame(y, expectedLuma, "luma");
    expectSame(uv, expectedChroma, "chroma");
  }
  return 0;
}
