// The six YUV conversions against the reference: sizes, strides and contents.
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "libalgorithm/yuv_convert.h"

namespace {

using ref::Frame;

struct Image {
  Bytes pixels, luma, chroma;
};

template <auto kRoutine>
void runWords(Image& image, const Frame& f) {
  kRoutine(reinterpret_cast<uint32_t*>(image.pixels.data()), image.luma.data(), image.chroma.data(),
           f.width, f.height, f.yStride, f.uvStride);
}
template <auto kRoutine>
void runPacked(Image& image, const Frame& f) {
  kRoutine(image.pixels.data(), image.luma.data(), image.chroma.data(), f.width, f.height,
           f.yStride, f.uvStride);
}

constexpr struct Converter {
  const char* name;
  bool encodes;
  int pixelBytes, u;  // u: which byte of a chroma pair
  void (*run)(Image&, const Frame&);
} kConverters[] = {{"decodeYUV2ARGB_LUT", false, 4, 0, runWords<decodeYUV2ARGB_LUT>},
                   {"decodeYVU2ARGB_OpenGL", false, 4, 1, runWords<decodeYVU2ARGB_OpenGL>},
                   {"decodeYUV2ARGB_jni", false, 3, 0, runPacked<decodeYUV2ARGB_jni>},
                   {"decodeARGB2YUV_OpenGL", true, 4, 0, runWords<decodeARGB2YUV_OpenGL>},
                   {"decodeARGB2YVU_OpenGL", true, 4, 1, runWords<decodeARGB2YVU_OpenGL>},
                   {"decodeARGB2YUV_jni", true, 3, 0, runPacked<decodeARGB2YUV_jni>}};

/// What the converter makes of an image. The reference knows packed pixels only, R, G, B to encode
/// and B, G, R when decoded; words are B, G, R, A.
Image reference(const Converter& c, Image image, const Frame& f) {
  const bool words = c.pixelBytes == 4;
  if (c.encodes) {
    Bytes rgb = image.pixels;
    for (std::size_t i = 0; words && i < rgb.size() / 4 * 3; ++i) {
      rgb[i] = image.pixels[i / 3 * 4 + 2 - i % 3];
    }
    ref::encode(rgb.data(), image.luma.data(), image.chroma.data(), f, c.u);
    return image;
  }
  const Bytes bgr = ref::decode(image.luma.data(), image.chroma.data(), f, c.u);
  for (std::size_t i = 0; i < image.pixels.size(); ++i) {
    image.pixels[i] = !words ? bgr[i] : i % 4 == 3 ? 255 : bgr[i / 4 * 3 + i % 4];
  }
  return image;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  Input input(data, size);
  const Converter& c = input.pick(kConverters);
  const int width = input.side(4000), height = input.side(4000 / width);
  const Frame f{width, height, width + input.upTo(70), width + input.upTo(70) * (input.byte() % 2)};
  const Image image{input.fill(width * height * c.pixelBytes),
                    input.fill(f.yStride * (height - 1) + width), input.fill(ref::chromaBytes(f))};
  // Odd sizes with gaps between chroma rows have no defined bytes, but stay inside all the same.
  const bool defined = (width % 2 == 0 && height % 2 == 0) || f.uvStride == width;
  const Image expected = defined ? reference(c, image, f) : image;
  onEachVectorTarget([&] {
    Image got = image;
    c.run(got, f);
    if (!defined) return;
    expectSame(got.pixels, expected.pixels, c.name);
    expectSame(got.luma, expected.luma, c.name);
    expectSame(got.chroma, expected.chroma, c.name);
  });
  return 0;
}
