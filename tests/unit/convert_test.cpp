// YUV conversions against the reference: whole images, strips, callbacks.
#include "convert/convert_rows.h"
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

const struct Converter {
  const char* name;
  bool encodes;
  int pixelBytes, u;  // u: which byte of a chroma pair
  Run* run;
} kConverters[] = {{"decodeYUV2ARGB_LUT", false, 4, 0, runArgb<decodeYUV2ARGB_LUT>},
                   {"decodeYVU2ARGB_OpenGL", false, 4, 1, runArgb<decodeYVU2ARGB_OpenGL>},
                   {"YUV2RGB", false, 3, 0, runYuv2Rgb},
                   {"decodeARGB2YUV_OpenGL", true, 4, 0, runArgb<decodeARGB2YUV_OpenGL>},
                   {"decodeARGB2YVU_OpenGL", true, 4, 1, runArgb<decodeARGB2YVU_OpenGL>},
                   {"RGB2YUV", true, 3, 0, runRgb2Yuv}};

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
    for (std::size_t i = 0; i < expected.size(); ++i) {
      expected[i] = !words ? bgr[i] : i % 4 == 3 ? 255 : bgr[i / 4 * 3 + i % 4];
    }
  }
  EXPECT_TRUE(same(gotPixels.bytes(), expected)) << "pixels";
  EXPECT_TRUE(same(gotLuma.bytes(), luma)) << "luma";
  EXPECT_TRUE(same(gotChroma.bytes(), chroma)) << "chroma";
}

void checkNoise(const Converter& c, const Frame& f, bool pageBefore = false) {
  check(c, f, noise(f.width * f.height * c.pixelBytes), noise(f.yStride * (f.height - 1) + f.width),
        noise(ref::chromaBytes(f)), pageBefore);
}

TEST(Convert, EverySizeAndStrideGivesTheReferenceBytesAndTouchesNothingElse) {
  onEachTarget([] {
    for (const Converter& c : kConverters) {
      for (int width = 1; width <= 72; ++width) {
        for (const int height : {1, 2, 3, 6}) {
          checkNoise(c, {width, height, width, width}, true);
          checkNoise(c, {width, height, width + 5, width});
          for (const int pad : {1, 2, 3, 9, 32}) {  // odd ones tell the two cursor rules apart
            if ((width | height) % 2 == 0) checkNoise(c, {width, height, width, width + pad});
          }
        }
      }
      checkNoise(c, {1022, 130, 1024, 1022});
      for (const auto& [width, height] : kSizesBelowOne) {
        c.run(nullptr, nullptr, nullptr, {width, height, 4, 4});
      }
    }
  });
}

TEST(Convert, PairsOfRowsAndRowsWithChromaEqualThePlainKernels) {
  const auto copied = [](const Guarded& g, const auto& change) {
    Bytes bytes = g.bytes();
    change(bytes.data());
    return bytes;
  };
  onEachTarget([&] {
    for (int i = 0; i < 3 * 100; ++i) {
      const auto format = static_cast<alg::RowFormat>(i % 3);
      const int width = 1 + i / 3, pixelBytes = int(alg::pixelBytes(format)),
                lumaStride = width + 3;
      const int pitch = pixelBytes * (width + 2), pairs = (width + 1) / 2 * 2;
      SCOPED_TRACE(testing::Message() << "format " << i % 3 << " width " << width);
      const Guarded luma(noise(lumaStride + width)), chroma(noise(pairs, 2));
      // At addresses of whole pairs of words and others.
      const Guarded pixels(noise(pitch + pixelBytes * (width + i % 2), 3));
      const Bytes decoded = copied(pixels, [&](uint8_t* to) {
        for (const int row : {0, 1}) {
          alg::decodeRowPlain(format, luma.data() + row * lumaStride, chroma.data(),
                              to + row * pitch, zu(width));
        }
      });
      alg::decodeRowPair(format, luma.data(), lumaStride, chroma.data(), pixels.data(), pitch,
                         zu(width));
      EXPECT_TRUE(same(pixels.bytes(), decoded));
      const uint8_t* row = pixels.data() + pitch;
      const Bytes lumas = copied(luma, [&](uint8_t* to) {
        alg::encodeLumaRowPlain(format, row, to + lumaStride, zu(width));
      });
      const Bytes chromas = copied(
          chroma, [&](uint8_t* to) { alg::encodeChromaRowPlain(format, row, to, zu(width)); });
      alg::encodeRow(format, row, luma.data() + lumaStride, chroma.data(), zu(width));
      EXPECT_TRUE(same(luma.bytes(), lumas));
      EXPECT_TRUE(same(chroma.bytes(), chromas));
      const Guarded alone(noise(pairs, 4));
      alg::encodeChromaRow(format, row, alone.data(), zu(width));
      EXPECT_TRUE(same(alone.bytes(), chromas));
    }
  });
}

// Each step has every pair of a luma and the other chroma sample.
TEST(Convert, EveryPairOfSamplesAndEveryColour) {
  Bytes luma(512 * 512), chroma(512 * 256);
  // The first sample of pairs, or red.
  for (int first = 0; first < 256 && !HasFailure(); first += kStep) {
    for (int i = 0; i < 512 * 512; ++i) {  // four luma values down, V across
      luma[zu(i)] = uint8_t(i / 1024 * 4 + i / 512 % 2 * 2 + i % 2);
      chroma[zu(i / 2)] = uint8_t(i / 2 % 2 == 0 ? first : i / 2 % 512 / 2);
    }
    onEachTarget([&] {
      for (const bool encodes : {false, true}) {  // formats take turns: they share the arithmetic
        const Converter& c = kConverters[first / kStep % 3 + (encodes ? 3 : 0)];
        const int rows = c.encodes ? 512 : 128;
        Bytes pixels(zu(512 * rows * c.pixelBytes));
        for (int i = 0; i < 512 * rows; ++i) {  // a block per colour, told by its bottom left
          uint8_t* pixel = &pixels[zu(i * c.pixelBytes)];
          pixel[0] = uint8_t(i % 512 / 2), pixel[1] = uint8_t(i / 1024);
          pixel[2] = uint8_t(first + i % 2 + (i / 512 % 2 == 0));
        }
        check(c, {512, rows, 512, 512}, pixels, {luma.begin(), luma.begin() + 512 * rows},
              {chroma.begin(), chroma.begin() + 256 * rows});
      }
    });
  }
}

TEST(Convert, KnownColours) {
  constexpr uint32_t kEncoded[][4] = {{0xFF000000, 16, 128, 128},
                                      {0x00FFFFFF, 234, 128, 128},
                                      {0xFFFF0000, 81, 90, 239},
                                      {0xFF0000FF, 40, 239, 109}};
  constexpr uint32_t kDecoded[][4] = {{0xFF000000, 16, 128, 128},
                                      {0xFFFFFFFF, 235, 128, 128},
                                      {0xFFFDFDFD, 234, 128, 128},
                                      {0xFFFFAFFF, 255, 128, 255}};
  for (const auto& [argb, y, u, v] : kEncoded) {
    const uint32_t pixels[4] = {0, 0, argb, 0};
    uint8_t frame[6];
    decodeARGB2YUV_OpenGL(pixels, frame, frame + 4, 2, 2, 2, 2);
    EXPECT_TRUE(same(frame, Bytes{16, 16, uint8_t(y), 16, uint8_t(u), uint8_t(v)})) << argb;
  }
  for (const auto& [argb, y, u, v] : kDecoded) {
    uint32_t pixels[4];
    const Bytes luma(4, uint8_t(y)), chroma = {uint8_t(u), uint8_t(v)};
    decodeYUV2ARGB_LUT(pixels, luma.data(), chroma.data(), 2, 2, 2, 2);
    EXPECT_EQ(pixels[3], argb);
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
          expected[zu(r * stride + c)] = clamped(ref::lumaOf, r * width + c);
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
