// Bilinear resize of 32-bit words (0xAARRGGBB) in 16-bit fixed point.
//
// Positions are 32-bit with 16 fractional bits and wrap. The weights of two neighbours add up to
// 65535, and every step truncates. Source rows are first mixed along the row, to the destination's
// width; neighbouring rows of the destination mostly share the two that they lie between.
#include <cstddef>
#include <new>
#include <utility>

#include "base/block.h"
#include "catalogue/operations.h"
#include "kernels/overlap.h"
#include "libalgorithm/pretty_filters.h"
#include "pretty/resize.h"
#include "pretty/resize_rows.h"

namespace alg {
namespace {

/// Source pixels per destination pixel, truncated. Out of an int's range it wraps as positions do;
/// the way there by 64 bits holds every ratio of two ints (below 2^47).
int32_t stepOf(int sourceSize, int targetSize) {
  const double ratio = static_cast<double>(sourceSize) / targetSize;
  return static_cast<int32_t>(static_cast<int64_t>(ratio * 65536.0));
}

/// The whole part of a position, limited to 0..size - 1.
int wholePart(int32_t position, int size) {
  const int whole = position >> 16;
  return whole < 0 ? 0 : whole < size ? whole : size - 1;
}

using Image = ResizeSource;

/// How many columns of source row y have their right-hand neighbour for row j of the destination;
/// others only themselves. Neighbours end before source row j + 1, whatever y is.
int64_t neighboursOf(const Image& src, int y, int j) {
  const int32_t end = (j + 1) * src.width;  // in pixels; wraps
  return end - int64_t{y} * src.width - 1;
}

/// Any row of the destination, pixel by pixel.
void resizeRow(const Image& src, int y, int64_t neighbours, uint32_t fractionY, int32_t step,
               uint32_t* dst, int dstWidth) {
  const auto across = [&](int rowIndex, int x, uint32_t fraction) {
    const uint32_t* row = src.row(rowIndex);
    const uint32_t next = x + 1 < src.width ? row[x + 1] : *src.row(rowIndex + 1);
    return mixWords(row[x], x < neighbours ? next : row[x], fraction);
  };
  int32_t position = 0;
  for (int i = 0; i < dstWidth; ++i, position += step) {
    const int x = wholePart(position, src.width);
    const uint32_t fractionX = static_cast<uint32_t>(position) & kFraction;
    dst[i] = mixWords(across(y, x, fractionX), across(y + 1, x, fractionX), fractionY) & kNoAlpha;
  }
}

}  // namespace

/// Mixes rows of the destination from whole rows of the source.
class Resizer::RowMixer {
 public:
  RowMixer(const Image& source, int dstWidth, int32_t step)
      : src(source),
        memory(allocateBlock(4 * sizeof(uint32_t) * static_cast<std::size_t>(dstWidth))) {
    auto* words = reinterpret_cast<uint32_t*>(memory.get());
    if (words != nullptr) {
      recent.words = words;
      older.words = words + dstWidth;
      setColumns(reinterpret_cast<int32_t*>(words + 2 * std::ptrdiff_t{dstWidth}),
                 words + 3 * std::ptrdiff_t{dstWidth}, dstWidth, step);
    }
  }

  /// Whether it can: with neighbours for all columns, all but the last one, or none.
  bool can(int64_t neighbours) const {
    return memory != nullptr && (neighbours <= 0 || neighbours + 1 >= src.width);
  }

  void mixRow(int y, int64_t neighbours, uint32_t fraction, uint32_t* dst) {
    if (neighbours <= 0) {
      return takeRows(src.row(y), src.row(y + 1), fraction, columns, dst);
    }
    const bool wraps = neighbours >= src.width;
    const uint32_t* top = mixed(y, wraps);
    const uint32_t* bottom = fraction == 0 ? top : mixed(y + 1, wraps);  // no share in it
    mixRows(top, bottom, fraction, columns.count, dst);
  }

 private:
  struct Row {
    uint32_t* words = nullptr;
    int y = -1;
    bool wraps = false;  // the last word's neighbour is the next row's first, not itself
    bool is(int otherY, bool otherWraps) const { return y == otherY && wraps == otherWraps; }
  };

  void setColumns(int32_t* index, uint32_t* fractions, int count, int32_t step) {
    const int reach = step < 0 || step > 2 * 65536 ? 0 : step <= 65536 ? 1 : 2;
    columns = {.index = index,
               .fractions = fractions,
               .count = count,
               .sourceWidth = src.width,
               .reach = reach,
               .step = step};
    int32_t position = 0;
    for (int i = 0; i < count; ++i, position += step) {
      index[i] = wholePart(position, src.width);
      fractions[i] = (static_cast<uint32_t>(position) & kFraction) * 0x10001;
      if (columns.paired == i && position >= 0 && index[i] + 1 < src.width) {
        columns.paired = i + 1;
      }
    }
  }

  /// Source row y at the destination's width; the last two are kept.
  const uint32_t* mixed(int y, bool wraps) {
    y = y < src.height ? y : src.height - 1;
    if (!recent.is(y, wraps)) {
      std::swap(recent, older);
    }
    if (!recent.is(y, wraps)) {
      const uint32_t* row = src.row(y);
      mixColumns(row, wraps ? *src.row(y + 1) : row[src.width - 1], columns, recent.words);
      recent.y = y;
      recent.wraps = wraps;
    }
    return recent.words;
  }

  Image src;
  Block memory;  // two rows, then the columns' indices and fractions
  Row recent, older;
  ResizeColumns columns;
};

Resizer::Resizer(const ResizeSource& source, int dstWidth, int dstHeight, bool apart)
    : src_(source),
      dstWidth_(dstWidth),
      xStep_(stepOf(source.width, dstWidth)),
      yStep_(stepOf(source.height, dstHeight)),
      mixer_(apart ? new (std::nothrow) RowMixer(source, dstWidth, xStep_) : nullptr) {}

Resizer::~Resizer() = default;

void Resizer::nextRow(uint32_t* out) {
  const int y = wholePart(position_, src_.height);
  const uint32_t fraction = static_cast<uint32_t>(position_) & kFraction;
  const int64_t neighbours = neighboursOf(src_, y, row_);
  if (mixer_ != nullptr && mixer_->can(neighbours)) {
    mixer_->mixRow(y, neighbours, fraction, out);
  } else {
    resizeRow(src_, y, neighbours, fraction, xStep_, out, dstWidth_);
  }
  ++row_;
  position_ += yStep_;
}

}  // namespace alg

void Resize(uint32_t* dst, int dstWidth, int dstHeight, const uint32_t* src, int srcWidth,
            int srcHeight) {
  if (dstWidth < 1 || dstHeight < 1 || srcWidth < 1 || srcHeight < 1) {
    return;
  }
  const auto bytesOf = [](int width, int height) {
    return sizeof(uint32_t) * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  };
  // A source that is written to is read pixel by pixel.
  const bool apart =
      !alg::overlap(reinterpret_cast<const uint8_t*>(src), bytesOf(srcWidth, srcHeight),
                    reinterpret_cast<const uint8_t*>(dst), bytesOf(dstWidth, dstHeight));
  alg::Resizer resizer({src, srcWidth, srcHeight, srcWidth}, dstWidth, dstHeight, apart);
  for (int j = 0; j < dstHeight; ++j, dst += dstWidth) {
    resizer.nextRow(dst);
  }
}

namespace alg::operation {

constinit const Operation kResize{
    .name = "resize",
    .routine = "Resize",
    .family = Family::kGeometry,
    .shows = "Another size.",
    .formula = "Bilinear, 16 fractional bits, truncating.",
    .pixels = Pixels::kWords,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kChosen,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run =
        [](const Call& call) {
          Resize(reinterpret_cast<uint32_t*>(call.dst), call.resultWidth, call.resultHeight,
                 reinterpret_cast<const uint32_t*>(call.src), call.width, call.height);
        },
};

}  // namespace alg::operation
