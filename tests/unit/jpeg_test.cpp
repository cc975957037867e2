// JPEG files both ways; the fixtures come straight from the codec library.
#include <sys/resource.h>

#include "guarded.h"
#include "jpeg_files.h"
#include "platform/jpeg.h"

namespace {

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
