// JPEG files of any bytes: decoded as Java asks for them, at reduced sizes, and by rows.
#include <algorithm>
#include <cstring>
#include <vector>

#include "codec/jpeg_bridge.h"
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "platform/jpeg_reader.h"

namespace {

constexpr int64_t kMostPixels = int64_t{1} << 20;

/// Whether any frame header asks for more pixels than a quick run can hold.
bool tooLarge(std::span<const uint8_t> file) {
  for (std::size_t at = 0; at + 9 <= file.size(); ++at) {
    const int64_t height = file[at + 5] << 8 | file[at + 6],
                  width = file[at + 7] << 8 | file[at + 8];
    const bool frame = file[at] == 0xFF && file[at + 1] >= 0xC0 && file[at + 1] <= 0xCF;
    if (frame && width * height > kMostPixels) return true;
  }
  return false;
}

void checkImage(const alg::DecodedJpeg& image) {
  expectThat(image.width > 0 && image.height > 0, "a decoded image has pixels");
  for (std::size_t i = 3; i < 4 * asSize(image.width) * asSize(image.height); i += 4) {
    expectThat(image.pixels[i] == 255, "decoded pixels are opaque");
  }
}

/// Gives a file in small pieces, each in a block of its own.
class Pieces final : public alg::JpegInput {
 public:
  Pieces(std::span<const uint8_t> file, std::size_t bytes) : file_(file), bytes_(bytes) {}
  std::span<const uint8_t> next() override {
    const auto piece = file_.subspan(at_, std::min(bytes_, file_.size() - at_));
    at_ += piece.size();
    piece_.assign(piece.begin(), piece.end());
    piece_.shrink_to_fit();
    return piece_;
  }
  bool rewind() override {
    at_ = 0;
    return true;
  }

 private:
  std::span<const uint8_t> file_;
  std::vector<uint8_t> piece_;
  std::size_t bytes_, at_ = 0;
};

/// Reads a file by rows, a few at a time, at every reduction and in every order of bytes.
void readRows(alg::JpegInput& input, int choice, const alg::DecodedJpeg* whole) {
  alg::JpegReader reader(input, alg::JpegReader::Segments::kKeep);
  std::size_t size = 0;
  const alg::Block segments = reader.segments(size);
  const auto order = static_cast<alg::JpegPixels>(choice % 4);
  const int reduction = whole != nullptr ? 1 : 1 << choice / 4 % 4;
  reader.start({.pixels = order, .reduction = reduction});
  const std::size_t row = alg::bytesPerPixel(order) * asSize(reader.width());
  std::vector<uint8_t> rows(row * asSize(1 + choice % 3));
  while (reader.fault() == alg::JpegFault::kNone && reader.row() < reader.height()) {
    const int first = reader.row();
    const int read = reader.read(rows.data(), row, 1 + choice % 3);
    for (int y = 0; whole != nullptr && order == alg::JpegPixels::kBgra && y < read; ++y) {
      expectThat(
          std::memcmp(&rows[row * asSize(y)], &whole->pixels[row * asSize(first + y)], row) == 0,
          "rows have the pixels of the whole image");
    }
  }
  const bool done = reader.finish() == alg::JpegFault::kNone;
  expectThat(whole == nullptr || done, "what decodes as a whole also does by rows");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (tooLarge({data, size})) return 0;
  const int choice = size > 0 ? data[size - 1] : 0;
  Pieces pieces({data, size}, 1 + asSize(choice));
  readRows(pieces, choice, nullptr);
  const auto whole = alg::jpegToArgb(data, size);
  if (!whole) return 0;
  checkImage(*whole);
  alg::JpegBytes file({data, size});
  readRows(file, choice, &*whole);
  const int side = std::max(whole->width, whole->height);
  for (const int keepSide : {1, side / 3 + 1}) {
    const auto reduced = alg::decodeJpeg({data, size}, {.keepSide = keepSide});
    expectThat(reduced.has_value(), "what decodes also decodes at a reduced size");
    checkImage(*reduced);
    expectThat(std::max(reduced->width, reduced->height) >= std::min(keepSide, side),
               "a reduced image keeps its longer side");
  }
  return 0;
}
