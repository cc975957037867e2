// YUV conversions against the reference: whole images, strips, callbacks, natives.
#include "fake_jni.h"
#include "guarded.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/yuv_convert.h"
#include "vector_targets.h"

namespace {

using ref::Frame;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kStep = 17;  // of the outermost value of exhaustive loops; divides 255
#else
constexpr int kStep = 3;
#endif

using Run = void(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& frame);

template <auto kRoutine>
void runArgb(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& f) {
  kRoutine(reinterpret_cast<uint32_t*>(pixels), luma, chroma, f.width, f.height, f.yStride,
           f.uvStride);
}

// The strip callbacks: only the pointers of their output count.
void runYuv2Rgb(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& f) {
  const YuvStripDesc in{luma, chroma, f.width, f.height, f.yStride, f.uvStride};
  RgbStripDesc out{pixels, -1, -1, -1, -1, 0, 0, 0, nullptr, 0, 0};
  YUV2RGB(&in, nullptr, &out);
}
void runRgb2Yuv(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& f) {
  const RgbStripDesc in{pixels, f.width, f.height, f.yStride, f.uvStride, 3, 0, 0, nullptr, 0, 0};
  YuvStripDesc out{luma, chroma, -1, -1, -1, -1};
  RGB2YUV(&in, nullptr, &out);
}

template <auto kNative>
void runNativeDecode(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& f) {
  Bytes frame(luma, luma + f.width * f.height);
  frame.insert(frame.end(), chroma, chroma + ref::chromaBytes(f));
  FakeJni jni;
  std::ranges::copy(jni.call(kNative, frame, f.width, f.height), pixels);
}
template <auto kNative>
void runNativeEncode(uint8_t* pixels, uint8_t* luma, uint8_t* chroma, const Frame& f) {
  FakeJni jni;
  const Bytes frame =
      jni.call(kNative, {pixels, pixels + f.width * f.height * 4}, f.width, f.height);
  const auto middle = frame.begin() + std::min(f.width * f.height, int(frame.size()));
  std::copy(frame.begin(), middle, luma), std::copy(middle, frame.end(), chroma);
}

const struct Converter {
  const char* name;
  bool encodes;
  int pixelBytes, u;  // u: which byte of a chroma pair
  Run* run;
  bool native = false;  // takes packed frames only
} kConverters[] = {{"decodeYUV2ARGB_LUT", false, 4, 0, runArgb<decodeYUV2ARGB_LUT>},
                   {"decodeYVU2ARGB_OpenGL", false, 4, 1, runArgb<decodeYVU2ARGB_OpenGL>},
                   {"YUV2RGB", false, 3, 0, runYuv2Rgb},
                   {"decodeARGB2YUV_OpenGL", true, 4, 0, runArgb<decodeARGB2YUV_OpenGL>},
                   {"decodeARGB2YVU_OpenGL", true, 4, 1, runArgb<decodeARGB2YVU_OpenGL>},
                   {"RGB2YUV", true, 3, 0, runRgb2Yuv},
                   {"YUV2ARGB", false, 4, 0, runNativeDecode<YUV2ARGB>, true},
                   {"YVU2ARGB", false, 4, 1, runNativeDecode<YVU2ARGB>, true},
                   {"ARGB2YUV", true, 4, 0, runNativeEncode<ARGB2YUV>, true},
                   {"ARGB2YVU", true, 4, 1, runNativeEncode<ARGB2YVU>, true}};

/// Runs the converter on guarded copies and compares everything it may write.
void check(const Converter& c, const Frame& f, const Bytes& pixels, Bytes luma, Bytes chroma,
           bool pageBefore = false) {
  SCOPED_TRACE(testing::Message() << c.name << " " << f.width << "x" << f.height << " strides "
                                  << f.yStride << " " << f.uvStride);
  const Guarded gotPixels(pixels, pageBefore), gotLuma(luma, pageBefore),
      gotChroma(chroma, pageBefore);
  c.run(gotPixels.data(), gotLuma.data(), gotChroma.data(), f);
  const bool words = c.pixelBytes == 4;
  Bytes expected = pixels;
  if (c.encodes) {
    Bytes rgb = pixels;  // packed pixels are R, G, B but words B, G, R, A
    for (std::size_t i = 0; words && i < pixels.size() * 3 / 4; ++i) {
      rgb[i] = pixels[i / 3 * 4 + 2 - i % 3];
    }
    ref::encode(rgb.data(), luma.data(), chroma.data(), f, c.u);
  } else {
    const Bytes bgr = ref::decode(luma.data(), chroma.data(), f, c.u);
    for (std::size_t i = 0; i < bgr.size() / 3 * asSize(c.pixelBytes); ++i) {
      expected[i] = !words ? bgr[i] : i % 4 == 3 ? 255 : bgr[i / 4 * 3 + i % 4];
    }
  }
  EXPECT_TRUE(same(gotPixels.bytes(), expected)) << "pixels";
  EXPECT_TRUE(same(gotLuma.bytes(), luma)) << "luma";
  EXPECT_TRUE(same(gotChroma.bytes(), chroma)) << "chroma";
}

/// A pixel behind images of odd height sees to addresses that aren't of whole pairs of words.
void checkNoise(const Converter& c, const Frame& f, bool pageBefore = false) {
  check(c, f, noise((f.width * f.height + f.height % 2) * c.pixelBytes),
        noise(f.yStride * (f.height - 1) + f.width), noise(ref::chromaBytes(f)), pageBefore);
}

TEST(Convert, EverySizeAndStrideGivesTheReferenceBytesAndTouchesNothingElse) {
  onEachTarget([] {
    for (const Converter& c : kConverters) {
      for (int width = 1; width <= 72; ++width) {
        for (const int height : {1, 2, 3, 6}) {
          checkNoise(c, {width, height, width, width}, true);
          if (c.native) continue;
          checkNoise(c, {width, height, width + 5, width});
          for (const int pad : {1, 2, 3, 9, 32}) {  // odd ones tell the two cursor rules apart
            if ((width | height) % 2 == 0) checkNoise(c, {width, height, width, width + pad});
          }
        }
      }
      if (c.native) continue;
      checkNoise(c, {1022, 130, 1024, 1022});
      for (const auto& [width, height] : kSizesBelowOne) {
        c.run(nullptr, nullptr, nullptr, {width, height, 4, 4});
      }
    }
  });
}

// Rows of whole cache lines, from the start of one on or not, and others.
TEST(Convert, LargeResultsThatGoPastTheCaches) {
  onEachVectorTarget([] {
    checkNoise(kConverters[0], {2064, 2037, 2064, 2064}, true);
    checkNoise(kConverters[1], {2064, 2036, 2064, 2064});
    checkNoise(kConverters[1], {2056, 2042, 2056, 2056});
  });
}

// Each step has every pair of a luma and the other chroma sample.
TEST(Convert, EveryPairOfSamplesAndEveryColour) {
  Bytes luma(512 * 512), chroma(512 * 256);
  // The first sample of pairs, or red.
  for (int first = 0; first < 256 && !HasFailure(); first += kStep) {
    for (int i = 0; i < 512 * 512; ++i) {  // four luma values down, V across
      luma[asSize(i)] = uint8_t(i / 1024 * 4 + i / 512 % 2 * 2 + i % 2);
      chroma[asSize(i / 2)] = uint8_t(i / 2 % 2 == 0 ? first : i / 2 % 512 / 2);
    }
    onEachTarget([&] {
      for (const bool encodes : {false, true}) {  // formats take turns: they share the arithmetic
        const Converter& c = kConverters[first / kStep % 3 + (encodes ? 3 : 0)];
        const int rows = c.encodes ? 512 : 128;
        Bytes pixels(asSize(512 * rows * c.pixelBytes));
        for (int i = 0; i < 512 * rows; ++i) {  // a block per colour, told by its bottom left
          uint8_t* pixel = &pixels[asSize(i * c.pixelBytes)];
          pixel[0] = uint8_t(i % 512 / 2), pixel[1] = uint8_t(i / 1024);
          pixel[2] = uint8_t(first + i % 2 + (i / 512 % 2 == 0));
        }
        check(c, {512, rows, 512, 512}, pixels, {luma.begin(), luma.begin() + 512 * rows},
              {chroma.begin(), chroma.begin() + 256 * rows});
      }
    });
  }
}

/// Values of a pixel: full-range ints, 20 bits and 8 bits by turns.
int wild(int index, int channel) {
  return int((uint32_t(index) * 3 + uint32_t(channel)) * 2654435761u) >> index % 3 * 12;
}

void fetchWild(void* asked, int index, int* red, int* green, int* blue) {
  static_cast<std::vector<int>*>(asked)->push_back(index);
  *red = wild(index, 0), *green = wild(index, 1), *blue = wild(index, 2);
}

TEST(Convert, PullsPixelsInBlockOrderAndClampsWildOnes) {
  const auto clamped = [](int (*formula)(int, int, int), int index) {
    return uint8_t(ref::clamp255(formula(wild(index, 0), wild(index, 1), wild(index, 2))));
  };
  for (const auto& [width, height] : {std::pair{2, 2}, {34, 18}, {6, 10}, {7, 5}, {1, 1}}) {
    const int stride = width + width % 4;
    const Guarded luma(noise(stride * (height - 1) + width)), chroma(noise(width * height / 4 * 2));
    Bytes expected = luma.bytes(), u, v;
    std::vector<int> order, asked;
    for (int y = 0; y < height; y += 2) {
      for (int x = 0; x < width; x += 2) {
        const int right = std::min(x + 1, width - 1), bottom = std::min(y + 1, height - 1);
        for (const auto& [r, c] : {std::pair{y, x}, {y, right}, {bottom, right}, {bottom, x}}) {
          order.push_back(r * width + c);
          expected[asSize(r * stride + c)] = clamped(ref::lumaOf, r * width + c);
        }
        u.push_back(clamped(ref::uOf, order.back()));
        v.push_back(clamped(ref::vOf, order.back()));
      }
    }
    decodeARGB2YUV420P(&asked, fetchWild, luma.data(), chroma.data(), width, height, stride);
    EXPECT_EQ(asked, order);
    EXPECT_TRUE(same(luma.bytes(), expected)) << width;
    u.insert(u.end(), v.begin(), v.end());
    EXPECT_TRUE(width % 2 != 0 || same(chroma.bytes(), u)) << width;
  }
  for (const auto& [width, height] : kSizesBelowOne) {
    decodeARGB2YUV420P(nullptr, nullptr, nullptr, nullptr, width, height, 4);
  }
}

}  // namespace
