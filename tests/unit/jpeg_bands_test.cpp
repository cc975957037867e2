// JPEG in bands: the same bytes as whole images give, whatever is cut where.
#include <malloc.h>

#include <fstream>

#include "codec/jpeg_bands.h"
#include "guarded.h"
#include "jpeg_files.h"
#include "platform/jpeg.h"
#include "platform/jpeg_writer.h"
#include "system_calls.h"

namespace {

using alg::JpegFault;
using alg::JpegPixels;

constexpr int kQuality = 88;

/// Work that tells rows apart, and reads `halo` rows above and below.
void paint(const alg::JpegBand& band, int rowBytes, int halo) {
  for (int y = band.firstRow; y < band.firstRow + band.rows; ++y) {
    for (int x = 0; x < rowBytes; ++x) {
      int sum = y;
      for (int k = -halo; k <= halo; ++k) {
        const int row = std::clamp(y + k, 0, band.imageHeight - 1) - band.firstRow;
        sum += (k + halo + 1) * band.src[row * rowBytes + x];
      }
      band.dst[(y - band.firstRow) * rowBytes + x] = uint8_t(sum);
    }
  }
}

/// A file through paint() as a whole.
Bytes whole(const Bytes& file, int halo) {
  const auto image = alg::decodeJpeg(file).value();
  const std::size_t bytes = asSize(image.width * image.height * 4);
  Bytes result(bytes);
  paint({image.pixels.get(), result.data(), image.width, image.height, 0, image.height},
        4 * image.width, halo);
  const auto jpeg = alg::encodeJpeg(result.data(), image.width, image.height, kQuality).value();
  return {jpeg.bytes.get(), jpeg.bytes.get() + jpeg.size};
}

struct Outcome {
  alg::JpegBandResult result;
  Bytes file;
};

Outcome inBands(const Bytes& file, alg::JpegBandOptions options,
                const alg::JpegBandWork& before = nullptr) {
  const Guarded guarded(file);
  alg::JpegBytes input({guarded.data(), file.size()});
  Bytes bytes;
  alg::JpegSink output([&](std::span<const uint8_t> piece) {
    bytes.insert(bytes.end(), piece.begin(), piece.end());
    return true;
  });
  options.quality = kQuality;
  const auto result = alg::transcodeJpeg(input, output, options, [&](const alg::JpegBand& band) {
    EXPECT_EQ(band.rowsAbove, std::min(options.halo, band.firstRow));
    EXPECT_EQ(band.rowsBelow, std::min(options.halo, band.imageHeight - band.firstRow - band.rows));
    EXPECT_EQ(band.src == band.dst, options.inPlace && options.halo == 0);
    if (before && !before(band)) return false;
    paint(band, int(alg::bytesPerPixel(options.source)) * band.width, options.halo);
    return true;
  });
  return {result, bytes};
}

TEST(JpegBands, GiveTheFileOfTheWholeImage) {
  const std::pair<int, int> kSizes[] = {{97, 61}, {1, 1}, {16, 33}, {5, 200}};
  for (const Fixture& fixture : kFixtures) {
    for (const auto& [width, height] : kSizes) {
      const Bytes file = makeJpeg(fixture, width, height);
      for (const int halo : {0, 1, 70}) {
        const Bytes expected = whole(file, halo);
        for (const int rows : {0, 1, 13}) {
          for (const bool inPlace : {true, false}) {
            const auto [result, got] =
                inBands(file, {.inPlace = inPlace, .halo = halo, .bandRows = rows});
            EXPECT_EQ(result.fault, JpegFault::kNone);
            EXPECT_TRUE(same(got, expected))
                << fixture.name << " " << width << "x" << height << " " << halo << " " << rows;
          }
        }
      }
    }
  }
}

TEST(JpegBands, OnTwoThreadsOrOneAreTheSame) {
  for (const int kind : {0, 3, 5}) {
    const Bytes file = makeJpeg(kFixtures[kind], 701, 523);
    const Bytes expected = whole(file, 2);
    for (const int rows : {0, 1, 7, 300, 522, 523}) {
      for (const int threads : {0, -1}) {
        threadsUntilFailure = threads;
        const auto [result, got] = inBands(file, {.halo = 2, .bandRows = rows});
        threadsUntilFailure = -1;
        EXPECT_TRUE(same(got, expected)) << kFixtures[kind].name << " " << rows << " " << threads;
      }
    }
  }
}

/// Gives what an image of half the width and twice the height would have.
class Narrowed final : public alg::JpegRowStore {
 public:
  explicit Narrowed(bool enough) : enough_(enough) {}
  bool begin(int& width, int& height, JpegPixels pixels) override {
    rowBytes_ = asSize(width) * 4;
    width /= 2;
    height *= 2;
    pixels_ = alg::bytesPerPixel(pixels);
    return enough_;
  }
  void put(const uint8_t* rows, int count) override {
    image_.insert(image_.end(), rows, rows + rowBytes_ * asSize(count));
  }
  void get(uint8_t* rows, int count) override {
    EXPECT_EQ(pixels_, 4U);
    std::copy_n(image_.begin() + given_, rowBytes_ / 2 * asSize(count), rows);
    given_ += long(rowBytes_) / 2 * count;
  }

 private:
  bool enough_;
  Bytes image_;
  std::size_t rowBytes_ = 0, pixels_ = 0;
  long given_ = 0;
};

TEST(JpegBands, GoThroughAStore) {
  const Bytes file = makeJpeg(kFixtures[0], 702, 523);
  const auto image = alg::decodeJpeg(file).value();
  Bytes painted(asSize(702 * 523 * 4));
  paint({image.pixels.get(), painted.data(), 351, 1046, 0, 1046}, 4 * 351, 2);
  const auto expected = alg::encodeJpeg(painted.data(), 351, 1046, kQuality).value();
  for (const bool overlap : {false, true}) {
    Narrowed store(true);
    const auto [result, got] = inBands(file, {.halo = 2, .store = &store, .overlap = overlap});
    EXPECT_EQ(result.width, 702);
    EXPECT_TRUE(same(got, {expected.bytes.get(), expected.bytes.get() + expected.size}));
    Narrowed small(false);
    EXPECT_EQ(inBands(file, {.store = &small, .overlap = overlap}).result.fault,
              JpegFault::kNoMemory);
  }
}

/// Takes a few small pieces.
class FailingOutput final : public alg::JpegOutput {
 public:
  std::span<uint8_t> room() override { return piece_; }
  bool take(std::size_t) override { return --left > 0; }
  int left = 5;

 private:
  uint8_t piece_[1000];
};

TEST(JpegBands, StopWhereWorkOrOutputDo) {
  const Bytes file = makeJpeg(kFixtures[0], 701, 523);
  for (const bool overlap : {false, true}) {
    int calls = 0;
    const auto stop = [&](const alg::JpegBand&) { return ++calls < 5; };
    const auto outcome = inBands(file, {.overlap = overlap, .bandRows = 9}, stop);
    EXPECT_EQ(outcome.result.fault, JpegFault::kCancelled);
    EXPECT_EQ(calls, 5);

    const auto into = [&](alg::JpegOutput& output) {
      alg::JpegBytes input(file);
      return alg::transcodeJpeg(input, output, {.overlap = overlap, .bandRows = 9},
                                [](const alg::JpegBand&) { return true; })
          .fault;
    };
    Bytes all;
    alg::JpegSink whole([&](auto p) { return all.insert(all.end(), p.begin(), p.end()), true; });
    EXPECT_EQ(into(whole), JpegFault::kNone);
    const std::size_t needed = all.size();
    FailingOutput fails;
    EXPECT_EQ(into(fails), JpegFault::kOutputFailed);
    EXPECT_EQ(fails.left, 0);
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, needed - 1, needed}) {
      const Guarded memory{Bytes(room)};
      alg::JpegBuffer buffer({memory.data(), room});
      EXPECT_EQ(into(buffer), room < needed ? JpegFault::kOutputFull : JpegFault::kNone) << room;
      EXPECT_EQ(buffer.size(), needed);
      EXPECT_TRUE(same(memory.bytes(), std::span(all).first(room)));
    }
  }
}

TEST(JpegBands, TellWhatIsLostOfADamagedFile) {
  const Bytes baseline = makeJpeg(kFixtures[0], 400, 300), progressive = makeJpeg(kFixtures[3]);
  const std::size_t half = (scanStart(baseline) + baseline.size()) / 2;
  const auto cut = [](Bytes file, std::size_t size) { return file.resize(size), file; };
  const std::string text(progressive.begin(), progressive.end());
  const struct {
    const char* what;
    Bytes file;
    bool lost, truncated;
    int from, to;
  } kRows[] = {
      {"whole", baseline, false, false, -1, -1},
      {"whole, progressive", progressive, false, false, -1, -1},
      {"no end marker", cut(baseline, baseline.size() - 2), false, false, -1, -1},
      {"no end marker, progressive", cut(progressive, progressive.size() - 2), false, false, -1,
       -1},
      {"a little padding", with(baseline, baseline.size() - 2, 0, Bytes(9)), false, false, -1, -1},
      {"half", cut(baseline, half), true, true, 100, 200},
      {"no last scan", cut(progressive, text.rfind("\xFF\xDA")), true, true, 0, 0},
      {"half a scan's header", cut(progressive, text.rfind("\xFF\xDA") + 5), true, true, 0, 0},
      {"a marker in the middle", with(baseline, half, 2, {0xFF, 0xD9}), true, false, 0, 0},
      {"noise in the middle", with(baseline, half, 50, noise(50)), true, false, 0, 0},
      {"a piece too much", with(baseline, half, 0, noise(90)), true, false, 0, 0},
  };
  for (const auto& row : kRows) {
    const auto [result, got] = inBands(row.file, {.bandRows = 7});
    EXPECT_EQ(result.fault, JpegFault::kNone) << row.what;
    EXPECT_TRUE(same(got, whole(row.file, 0))) << row.what;
    EXPECT_EQ(bool(result.damage), row.lost) << row.what;
    EXPECT_EQ(result.damage.truncated, row.truncated) << row.what;
    EXPECT_TRUE(row.from <= result.damage.firstRow && result.damage.firstRow <= row.to)
        << row.what << ": " << result.damage.firstRow;
  }
}

TEST(JpegBands, RefuseWhatTheWholeImageIsRefusedFor) {
  const Bytes baseline = makeJpeg(kFixtures[0]), progressive = makeJpeg(kFixtures[3]);
  const Bytes scan(baseline.begin() + int(find(baseline, '\xDA')), baseline.end());
  for (const Bytes& file :
       {with(baseline, baseline.size() - 2, 2, scan), with(progressive, 0, 2, {0, 0})}) {
    EXPECT_FALSE(alg::decodeJpeg(file));
    const JpegFault fault = inBands(file, {}).result.fault;
    EXPECT_EQ(fault, file[0] == 0 ? JpegFault::kNotJpeg : JpegFault::kDamaged);
  }
}

TEST(JpegBands, CarrySegmentsByteForByteButNotWhatDescribesTheOldFile) {
  const auto segment = [](int marker, const std::string& text, std::size_t size = 0) {
    const std::size_t length = 2 + std::max(text.size(), size);
    std::string all = {'\xFF', char(marker), char(length >> 8), char(length)};
    (all += text).resize(length + 2, 'Z');
    return Bytes(all.begin(), all.end());
  };
  using std::string_literals::operator""s;
  const Bytes kept[] = {segment(0xE1, "Exif\0\0II"s), segment(0xE2, "ICC_PROFILE\0"s, 65533),
                        segment(0xEF, "anything"), segment(0xFE, ""), segment(0xED, "Photoshop")};
  const Bytes dropped[] = {segment(0xE2, "MPF\0II*\0"s), segment(0xEE, "Adobe\0d\0\0\0\0\1"s)};
  const Bytes plain = makeJpeg({"", JCS_RGB, JCS_YCbCr, false, false});
  const std::size_t behindJfif = 2 + 18;
  Bytes all, expected;
  for (const Bytes& bytes : kept) {
    all.insert(all.end(), bytes.begin(), bytes.end());
    expected.insert(expected.end(), bytes.begin(), bytes.end());
    for (const Bytes& other : dropped) all.insert(all.end(), other.begin(), other.end());
  }
  const Bytes result = whole(plain, 0);
  const Bytes source = with(plain, behindJfif, 0, all);
  EXPECT_TRUE(same(inBands(source, {}).file, with(result, behindJfif, 0, expected)));
  EXPECT_TRUE(same(inBands(source, {.carrySegments = false}).file, result));
  EXPECT_TRUE(same(inBands(plain, {.carrySegments = false, .segments = expected}).file,
                   with(result, 2, 18, expected)));  // Exif is there: no JFIF
}

/// Kilobytes of memory in use now, or the most since the last reset.
long kilobytes(const std::string& what) {
  std::ifstream lines("/proc/self/status");
  for (std::string word; lines >> word;) {
    if (word == what) {
      long value = 0;
      lines >> value;
      return value;
    }
  }
  return -1;
}

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long kMostKilobytes = 40 << 10;  // the sanitizers' own memory is among them
#else
constexpr long kMostKilobytes = 4 << 10;
#endif

TEST(JpegBands, TakeLittleMemoryForAnImageOfAnySize) {
  constexpr int kWide = 12000, kTall = 9000;
  Bytes file;
  const auto append = [&](auto piece) {
    return file.insert(file.end(), piece.begin(), piece.end()), true;
  };
  alg::JpegSink made(append);
  alg::JpegWriter writer(made);
  writer.start({.width = kWide, .height = kTall, .pixels = JpegPixels::kRgb});
  const Bytes row = noise(3 * kWide);
  for (int y = 0; y < kTall; ++y) writer.write(row.data(), 0, 1);
  ASSERT_EQ(writer.finish(), JpegFault::kNone);

  // Once before: an emulator keeps the code that it has translated.
  EXPECT_EQ(inBands(makeJpeg(kFixtures[0], 900, 700), {}).result.fault, JpegFault::kNone);
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins anew
  const long before = kilobytes("VmRSS:");
  ASSERT_GT(before, 0);
  std::size_t size = 0;
  alg::JpegBytes input(file);
  alg::JpegSink output([&](auto piece) { return size += piece.size(), true; });
  const auto result = alg::transcodeJpeg(
      input, output, {.source = JpegPixels::kRgb, .result = JpegPixels::kRgb, .quality = 20},
      [](const alg::JpegBand&) { return true; });
  EXPECT_EQ(result.fault, JpegFault::kNone);
  EXPECT_TRUE(result.width == kWide && result.height == kTall && size > 1000000) << size;
  EXPECT_LE(kilobytes("VmHWM:") - before, kMostKilobytes);
}

}  // namespace
