// JPEG by rows: orders of bytes, pieces, headers, and what must not be.
#include "guarded.h"
#include "jpeg_files.h"
#include "platform/jpeg.h"
#include "platform/jpeg_reader.h"

namespace {

using alg::JpegFault;
using alg::JpegPixels;

TEST(JpegRows, ComeInEveryOrderOfBytesAndLeaveTheirGapsAlone) {
  for (const Fixture& fixture : kFixtures) {
    const Bytes file = makeJpeg(fixture, 61, 45);
    for (const int reduction : {1, 2, 4, 8}) {
      const auto bgra = alg::decodeJpeg(file, {.keepSide = 61 / reduction}).value();
      for (const auto order :
           {JpegPixels::kBgra, JpegPixels::kRgba, JpegPixels::kBgr, JpegPixels::kRgb}) {
        const int bytes = int(alg::bytesPerPixel(order)), red = int(order) % 2 == 0 ? 2 : 0;
        const int used = bytes * bgra.width, stride = used + 5;
        const Guarded memory(noise(stride * (bgra.height - 1) + used));
        Bytes expected = memory.bytes();
        for (int i = 0; i < bgra.width * bgra.height; ++i) {
          uint8_t* to = &expected[asSize(i / bgra.width * stride + i % bgra.width * bytes)];
          const uint8_t* from = &bgra.pixels[asSize(4 * i)];
          to[red] = from[2], to[1] = from[1], to[2 - red] = from[0];
          if (bytes == 4) to[3] = 255;
        }
        alg::JpegBytes input(file);
        alg::JpegReader reader(input);
        ASSERT_EQ(reader.start({.pixels = order, .reduction = reduction}), JpegFault::kNone);
        for (const int rows : {3, 1, 0, 20, 100}) {
          reader.read(memory.data() + reader.row() * stride, asSize(stride), rows);
        }
        EXPECT_EQ(reader.finish(), JpegFault::kNone);
        EXPECT_TRUE(same(memory.bytes(), expected)) << fixture.name << " " << int(order);

        const alg::JpegRowWork work = [&](uint8_t* row, std::size_t pixels) {
          if (fixture.input == JCS_CMYK) alg::convertCmyk(row, row, pixels, order, true);
        };
        if (bytes == 4) {
          alg::JpegBytes again(file);
          alg::JpegReader worked(again);
          worked.start({.pixels = order, .reduction = reduction, .rowWork = &work});
          worked.read(memory.data(), asSize(stride), 100);
          EXPECT_TRUE(same(memory.bytes(), expected)) << fixture.name << ", by the row";
        }
        const auto encode = [&](const uint8_t* from, std::size_t apart, JpegPixels pixels) {
          Bytes jpeg(20000);
          alg::JpegBuffer to(jpeg);
          const alg::JpegView view{const_cast<uint8_t*>(from), bgra.width, bgra.height, apart,
                                   pixels};
          EXPECT_EQ(alg::encodeJpegTo(to, view, 90, alg::JpegSampling::k422), JpegFault::kNone);
          return jpeg;
        };
        EXPECT_EQ(encode(memory.data(), asSize(stride), order),
                  encode(bgra.pixels.get(), asSize(4 * bgra.width), JpegPixels::kBgra));
      }
    }
  }
}

TEST(JpegRows, HeadersTellWhatTheyHoldOrWhatIsWrong) {
  const Bytes file = makeJpeg(kFixtures[0]), progressive = makeJpeg(kFixtures[3]);
  const std::size_t frame = find(file, '\xC0');
  const Bytes png = {0x89, 'P', 'N', 'G'};
  const struct {
    Bytes file;
    JpegFault fault;
  } kRows[] = {{file, JpegFault::kNone},
               {{}, JpegFault::kNotJpeg},
               {png, JpegFault::kNotJpeg},
               {{file.begin(), file.begin() + int(frame)}, JpegFault::kDamaged},
               {with(file, frame + 1, 1, {0xC3}), JpegFault::kUnsupported},  // lossless
               {with(file, frame + 4, 1, {12}), JpegFault::kUnsupported},    // bits
               {with(file, frame + 5, 4, {0xFF, 0xFF, 0, 9}), JpegFault::kTooLarge},
               {with(file, frame + 5, 4, {80, 0, 80, 0}), JpegFault::kTooLarge}};
  for (const auto& row : kRows) {
    alg::JpegBytes input(row.file);
    alg::JpegInfo info;
    EXPECT_EQ(alg::readJpegInfo(input, info), row.fault) << &row - kRows;
    EXPECT_EQ(info.width > 0, row.fault == JpegFault::kNone || row.fault == JpegFault::kTooLarge);
  }
  const Bytes huge = with(progressive, find(progressive, '\xC2') + 5, 4, {60, 0, 60, 0});
  alg::JpegBytes large(huge);
  alg::JpegReader reader(large);
  EXPECT_EQ(reader.start({}), JpegFault::kTooComplex);
  Bytes room(9000);
  for (const int quality : {1, 37, 75, 92, 100}) {
    for (const auto sampling :
         {alg::JpegSampling::k420, alg::JpegSampling::k422, alg::JpegSampling::k444}) {
      alg::JpegBuffer output(room);
      Bytes pixels(16 * 9 * 4);
      alg::encodeJpegTo(output, {pixels.data(), 16, 9, 64}, quality, sampling);
      alg::JpegBytes input(room);
      alg::JpegInfo info;
      EXPECT_EQ(alg::readJpegInfo(input, info), JpegFault::kNone);
      EXPECT_TRUE(info.quality == quality && info.sampling == sampling && info.width == 16 &&
                  info.height == 9 && !info.wholeImage)
          << info.quality;
    }
  }
}

/// Gives a file in small pieces.
class Pieces final : public alg::JpegInput {
 public:
  Pieces(const Bytes& file, std::size_t bytes) : left_(file), all_(file), bytes_(bytes) {}
  std::span<const uint8_t> next() override {
    const auto piece = left_.first(std::min(bytes_, left_.size()));
    left_ = left_.subspan(piece.size());
    return piece;
  }
  bool rewind() override { return left_ = all_, true; }
  std::size_t left() const { return left_.size(); }

 private:
  std::span<const uint8_t> left_, all_;
  std::size_t bytes_;
};

TEST(JpegRows, OfAFileInPiecesAreTheSame) {
  for (const Fixture& fixture : kFixtures) {
    Bytes file = makeJpeg(fixture, 61, 45);
    file.resize(std::string(file.begin(), file.end()).rfind("\xFF\xDA") + 9);
    const auto expected = alg::decodeJpeg(file);  // all scans but the last, if there are more
    for (const std::size_t bytes : {1U, 2U, 7U, 300U, 5000U}) {
      Pieces input(file, bytes);
      Bytes pixels(4 * 61 * 45);
      alg::JpegDamage damage;
      const JpegFault fault = alg::decodeJpegInto(input, 1, {pixels.data(), 61, 45, 244}, damage);
      ASSERT_EQ(fault == JpegFault::kNone, expected.has_value()) << fixture.name << " " << bytes;
      if (!expected) continue;
      EXPECT_TRUE(same(pixels, {expected->pixels.get(), pixels.size()})) << fixture.name;
      EXPECT_TRUE(damage.truncated);
    }
  }
}

TEST(JpegRows, SegmentsToCarryAreBounded) {
  const Bytes plain = makeJpeg(kFixtures[0]);
  Bytes segments;
  while (segments.size() <= alg::kMostJpegSegmentBytes) {
    segments.insert(segments.end(), {0xFF, 0xE5, 0xFF, 0xFF});
    segments.resize(segments.size() + 0xFFFD);
  }
  const Bytes file = with(plain, 2, 0, segments);
  for (const std::size_t bytes : {std::size_t{100000}, file.size()}) {
    using Segments = alg::JpegReader::Segments;
    Pieces input(file, bytes);
    EXPECT_EQ(alg::JpegReader(input, Segments::kKeep).fault(), JpegFault::kTooComplex);
    EXPECT_EQ(input.left() > 0, bytes < file.size() - alg::kMostJpegSegmentBytes);
    input.rewind();
    EXPECT_EQ(alg::JpegReader(input, Segments::kDrop).fault(), JpegFault::kNone);
  }
}

}  // namespace
