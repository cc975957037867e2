// JPEG files both ways; the fixtures come straight from the codec library.
#include <cstdio>
// jpeglib.h needs the types above.
#include <jpeglib.h>
#include <sys/resource.h>

#include "guarded.h"
#include "platform/jpeg.h"

namespace {

constexpr int kWidth = 96, kHeight = 64;

/// A smooth picture whose channels all differ; the fourth is the key of CMYK files, 255 = no ink.
int sample(int x, int y, int c) {
  const int values[] = {x * 255 / kWidth, y * 255 / kHeight, (x + y) * 4 / 5 + 64, 255 - x};
  return values[c];
}

const struct Fixture {
  const char* name;
  J_COLOR_SPACE input, file;
  bool progressive, adobe;
} kFixtures[] = {{"baseline", JCS_RGB, JCS_YCbCr, false, false},
                 {"rgb", JCS_RGB, JCS_RGB, false, true},
                 {"grey", JCS_GRAYSCALE, JCS_GRAYSCALE, false, false},
                 {"progressive", JCS_RGB, JCS_YCbCr, true, false},
                 {"progressive grey", JCS_GRAYSCALE, JCS_GRAYSCALE, true, false},
                 {"inverted cmyk", JCS_CMYK, JCS_CMYK, false, true},
                 {"plain cmyk", JCS_CMYK, JCS_CMYK, false, false},
                 {"inverted ycck", JCS_CMYK, JCS_YCCK, false, true}};

Bytes makeJpeg(const Fixture& fixture) {
  jpeg_compress_struct codec;
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* file = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &file, &size);
  const int channels = fixture.input == JCS_CMYK ? 4 : fixture.input == JCS_RGB ? 3 : 1;
  codec.image_width = kWidth, codec.image_height = kHeight;
  codec.in_color_space = fixture.input, codec.input_components = channels;
  jpeg_set_defaults(&codec);
  jpeg_set_colorspace(&codec, fixture.file);
  jpeg_set_quality(&codec, 95, TRUE);
  codec.write_Adobe_marker = fixture.adobe ? TRUE : FALSE;
  if (fixture.progressive) jpeg_simple_progression(&codec);
  jpeg_start_compress(&codec, TRUE);
  for (int y = 0; y < kHeight; ++y) {
    uint8_t row[kWidth * 4], *line = row;
    for (int i = 0; i < kWidth * channels; ++i) {
      const int value = sample(i / channels, y, i % channels);
      row[i] = uint8_t(channels == 4 && !fixture.adobe ? 255 - value : value);
    }
    jpeg_write_scanlines(&codec, &line, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  Bytes bytes(file, file + size);
  std::free(file);
  return bytes;
}

/// Offset of the first marker of a kind.
std::size_t find(const Bytes& file, char kind) {
  return std::string(file.begin(), file.end()).find(std::string{'\xFF', kind});
}

/// Offset of the first byte behind the first scan header.
std::size_t scanStart(const Bytes& file) {
  return find(file, '\xDA') + 2 + file[find(file, '\xDA') + 3];
}

/// Decodes from a block that ends at a guard page.
std::optional<alg::DecodedJpeg> decode(const Bytes& file, int keepSide = 0) {
  const Guarded guarded(file);
  return alg::decodeJpeg({guarded.data(), file.size()}, {.keepSide = keepSide});
}

TEST(Jpeg, EveryKindDecodesToBlueGreenRedAlphaAtFullOrReducedSize) {
  for (const Fixture& fixture : kFixtures) {
    for (const int keepSide : {0, 1, 13, 48, 49, 97}) {
      SCOPED_TRACE(testing::Message() << fixture.name << " " << keepSide);
      const auto image = decode(makeJpeg(fixture), keepSide);
      ASSERT_TRUE(image);
      const int factor = kWidth / image->width;
      ASSERT_TRUE(8 % factor == 0 && kHeight / factor == image->height) << factor;
      EXPECT_GE(image->width, keepSide == 0 ? kWidth : std::min(keepSide, kWidth));
      for (int i = 0; i < image->width * image->height * 4; ++i) {
        const int x = i / 4 % image->width * factor, y = i / 4 / image->width * factor;
        const int c = fixture.input == JCS_GRAYSCALE ? 0 : 2 - i % 4;
        const int ink = fixture.input == JCS_CMYK ? sample(x, y, 3) : 255;
        const int expected = i % 4 == 3 ? 255 : sample(x, y, c) * ink / 255;
        ASSERT_NEAR(image->pixels[asSize(i)], expected, i % 4 == 3 ? 0 : 10 + 4 * factor) << i;
      }
    }
  }
}

/// The file with other sides in its frame header; there is data for the first few blocks only.
Bytes withSides(Bytes file, char frame, int width, int height) {
  const uint8_t sides[] = {uint8_t(height >> 8), uint8_t(height), uint8_t(width >> 8),
                           uint8_t(width)};
  std::copy_n(sides, 4, file.begin() + Bytes::difference_type(find(file, frame)) + 5);
  return file;
}

/// The file with its last scan again and again.
Bytes withScans(const Bytes& file, int repeats) {
  const auto lastScan =
      Bytes::difference_type(std::string(file.begin(), file.end()).rfind("\xFF\xDA"));
  Bytes longer(file.begin(), file.end() - 2);
  for (int i = 0; i < repeats; ++i) {
    longer.insert(longer.end(), file.begin() + lastScan, file.end() - 2);
  }
  longer.insert(longer.end(), {0xFF, 0xD9});
  return longer;
}

TEST(Jpeg, HugeImagesAndEndlessScansAreRefused) {
  const Bytes colours = makeJpeg(kFixtures[3]), grey = makeJpeg(kFixtures[4]);  // 10 and 6 scans
  EXPECT_TRUE(decode(withScans(colours, alg::kMostJpegScansSmall - 10)));
  EXPECT_FALSE(decode(withScans(colours, alg::kMostJpegScansSmall - 9)));
  constexpr int kMore = alg::kMostJpegScansLarge - 5;
  EXPECT_TRUE(decode(withScans(grey, kMore)));
  EXPECT_FALSE(decode(withSides(withScans(grey, kMore), '\xC2', 4200, 4200)));
  EXPECT_FALSE(decode(withSides(makeJpeg(kFixtures[0]), '\xC0', 20000, 15000)));
}

#ifdef __SANITIZE_THREAD__
constexpr long kPages = 3;  // resident for each page in use: the sanitizer notes who accessed it
#else
constexpr long kPages = 1;
#endif

TEST(Jpeg, FewBytesCannotAskForMoreMemoryThanThreeTimesTheImage) {
  // Photos of 108 million pixels have room, also at full chroma resolution.
  static_assert(alg::kMostJpegWorkBytes > 6L * 12000 * 9000);
  const auto peak = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * 1024;
  };
  Bytes colours = makeJpeg(kFixtures[3]), full = colours;
  full[find(full, '\xC2') + 11] = 0x11;  // sampling of the first component
  const struct {
    const Bytes& file;
    int width, height;
    bool decodes;
  } rows[] = {{colours, 16000, 16000, false}, {full, 16000, 16000, false},
              {full, 10900, 10900, false},    {full, 65535, 3000, false},
              {colours, 4000, 3000, true},    {full, 4000, 3000, true}};
  for (const auto& row : rows) {
    const long before = peak(), bytes = 4L * row.width * row.height;
    const Bytes file = withSides(row.file, '\xC2', row.width, row.height);
    EXPECT_EQ(decode(file).has_value(), row.decodes) << row.width << " x " << row.height;
    EXPECT_LE(peak() - before, kPages * (row.decodes ? 3 * bytes : bytes / 4)) << row.width;
  }
}

TEST(Jpeg, TruncatedFilesDecodeAsFarAsTheyGo) {
  for (const Fixture& fixture : kFixtures) {
    const Bytes file = makeJpeg(fixture);
    for (std::size_t size = 0; size < file.size(); size += size < scanStart(file) ? 1u : 7u) {
      const auto image = decode({file.begin(), file.begin() + int(size)});
      if (size <= scanStart(file) || size > file.size() / 2) {
        EXPECT_EQ(image.has_value(), size > scanStart(file))
            << fixture.name << " cut " << int(size) - int(scanStart(file)) << " from the scan";
      }
    }
  }
  Bytes half = makeJpeg(kFixtures[0]);
  half.resize((scanStart(half) + half.size()) / 2);
  const auto image = decode(half);
  ASSERT_TRUE(image);
  for (int i = 0; i < kWidth * 4; ++i) {  // the first row is there, the last one grey
    const bool alpha = i % 4 == 3;
    EXPECT_NEAR(image->pixels[asSize(i)], alpha ? 255 : sample(i / 4, 0, 2 - i % 4), 12) << i;
    EXPECT_NEAR(image->pixels[asSize(i + kWidth * (kHeight - 1) * 4)], alpha ? 255 : 128, 2) << i;
  }
}

TEST(Jpeg, HostileBytesNeitherDecodeNorCrash) {
  const Bytes file = makeJpeg(kFixtures[0]), png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  for (const Bytes& bytes : {Bytes(), noise(5000), png, Bytes(100, 0xFF)}) {
    EXPECT_FALSE(decode(bytes)) << bytes.size();
  }
  constexpr std::size_t kPixelBytes = kWidth * kHeight * 4;
  EXPECT_FALSE(alg::decodeJpeg(file, {.maxPixelBytes = kPixelBytes - 1}));
  EXPECT_TRUE(alg::decodeJpeg(file, {.maxPixelBytes = kPixelBytes}));
  const Bytes wild = noise(600);
  for (const Fixture& fixture : kFixtures) {
    for (std::size_t i = 0; i < 600; i += 2) {
      Bytes damaged = makeJpeg(fixture);
      damaged[wild[i] * damaged.size() / 256] = wild[i + 1];
      decode(damaged, 64);
    }
  }
}

}  // namespace
