// One walk down the image. Each source row is summed up from its left end, so that any box across
// is the difference of two of these prefix sums; the results wait in a ring of rows. Below that,
// every column has the running sum of its box, from which the destination row comes.
//
//   source row -> prefix sums -> ring row --- + entering, - leaving ---> column sums -> dst row
//
// Columns of equal radius form a run: all kernels go over the neighbouring elements (colours of
// pixels) of one run. A ramp down the rows makes one run of all columns, whose radius changes.
#include "kernels/box_blur.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "base/block.h"
#include "base/image_size.h"
#include "base/streamed.h"
#include "hwy/cache_control.h"
#include "kernels/box_blur_rows.h"

namespace alg {
namespace {

// Prefix sums wrap at 16 bits. Their differences are exact as long as a box across fits.
static_assert((2 * kMaxBlurPeak + 1) * 255 <= 0xFFFF);

/// Both passes round to bytes.
struct Separable {
  using Row = uint8_t;
  using Sum = uint16_t;
  static constexpr auto kAcross = meansAcross;
};

/// Rows keep their exact sums; they are divided in the end, with four more centres.
struct Square {
  using Row = uint16_t;
  using Sum = uint32_t;
  static constexpr auto kAcross = sumsAcross;
};

template <class Rule>
class Walk {
  using Row = typename Rule::Row;
  using Sum = typename Rule::Sum;

 public:
  explicit Walk(const BoxBlur& blur)
      : blur_(blur),
        rowBytes_(static_cast<std::size_t>(blur.pixels == BlurPixels::kWords ? kArgbBytes
                                                                             : kPackedBytes) *
                  static_cast<std::size_t>(blur.width)),
        slots_(std::min(2 * blur.ramp.peak + 3, blur.height)),
        stream_(blur.pixels == BlurPixels::kWords &&
                isStreamed(blur.dst, rowBytes_ * static_cast<std::size_t>(blur.height))) {}

  void run() {
    if (blur_.width < 1 || blur_.height < 1) {
      return;
    }
    findRuns();
    const Block block = takeMemory();
    if (block == nullptr) {
      return;
    }
    // A row of dst is written after that row of src was read: the two may be the same.
    for (int y = 0; y < blur_.height; ++y) {
      while (rows_ < blur_.height && rows_ <= y + blur_.ramp.peak) {
        blurNextRows();
      }
      finishRow(y);
    }
    if (stream_) hwy::FlushStream();
  }

 private:
  /// The rows whose sum a run has, some of them outside the image.
  struct Box {
    int first = 0, last = -1;
  };

  void findRuns() {
    for (int x = 0; x < blur_.width; ++x) {
      const bool byColumn = blur_.axis == RampAxis::kColumns;
      const int radius = byColumn ? blur_.ramp.radius(int64_t{blur_.firstEntry} + x) : 0;
      if (runCount_ == 0 || runs_[runCount_ - 1].radius != radius) {
        endRun();
        runs_[runCount_++] = {
            .begin = kBlurElements * static_cast<std::size_t>(x), .at = pitch_, .radius = radius};
      }
      runs_[runCount_ - 1].count += kBlurElements;
    }
    endRun();
  }

  void endRun() {
    if (runCount_ > 0) {
      const BlurRun& run = runs_[runCount_ - 1];
      pitch_ = run.at + (run.count + kBlurBlock - 1) / kBlurBlock * kBlurBlock;
    }
  }

  Block takeMemory() {
    const std::size_t elements = kBlurElements * static_cast<std::size_t>(blur_.width) + kBlurBlock;
    const std::size_t repeats = kBlurElements * static_cast<std::size_t>(2 * blur_.ramp.peak + 1);
    const std::size_t ring = pitch_ * static_cast<std::size_t>(slots_);
    Block block = allocateBlock(pitch_ * sizeof(Sum) + ring * sizeof(Row) +
                                2 * (elements + repeats) * sizeof(uint16_t) + 2 * elements);
    if (block != nullptr) {
      sums_ = reinterpret_cast<Sum*>(block.get());
      ring_ = reinterpret_cast<Row*>(sums_ + pitch_);
      prefixes_[0] = reinterpret_cast<uint16_t*>(ring_ + ring);
      prefixes_[1] = prefixes_[0] + elements + repeats;
      centres_ = reinterpret_cast<uint8_t*>(prefixes_[1] + elements + repeats);
      bytes_ = centres_ + elements;
      std::fill_n(sums_, pitch_, Sum{0});
    }
    return block;
  }

  void setRadii(int y) {
    if (blur_.axis == RampAxis::kRows) {
      runs_[0].radius = blur_.ramp.radius(int64_t{blur_.firstEntry} + y);
    }
  }

  /// Where a row begins that is still in the ring: one of the last slots_ that were blurred.
  std::size_t rowAt(int y) const {
    const int slot = nextSlot_ - (rows_ - y);
    return pitch_ * static_cast<std::size_t>(slot < 0 ? slot + slots_ : slot);
  }

  /// Element i of the prefix sums belongs to the pixels before i, of a row with `peak` repeated
  /// pixels on either side.
  void sumUpRows(const uint8_t* first, const uint8_t* second) {
    const auto peak = static_cast<std::size_t>(blur_.ramp.peak);
    const auto width = static_cast<std::size_t>(blur_.width);
    RowSums at[2] = {{first, prefixes_[0]}, {second, prefixes_[1]}};
    const auto go = [&](auto sumUpSome, std::size_t pixels) {
      sumUpSome(blur_.pixels, at, pixels);
      for (RowSums& sums : at) sums.prefix += kBlurElements * pixels;
    };
    const auto repeat = [&](std::size_t offset) {
      at[0].row = first + offset, at[1].row = second + offset;
      for (std::size_t i = 0; i < peak; ++i) go(sumUpPlain, 1);
    };
    for (uint16_t* prefix : prefixes_) std::fill_n(prefix, kBlurElements, uint16_t{0});
    repeat(0);
    go(sumUp, width);
    repeat(rowBytes_ - rowBytes_ / width);
  }

  /// Two rows, or the last one; one more than is asked for at a time.
  void blurNextRows() {
    const uint8_t* first = blur_.src + rowBytes_ * static_cast<std::size_t>(rows_);
    const int rows = std::min(2, blur_.height - rows_);
    sumUpRows(first, rows == 2 ? first + rowBytes_ : first);
    for (int i = 0; i < rows; ++i) {
      setRadii(rows_);
      Rule::kAcross(runs_, runCount_,
                    prefixes_[i] + kBlurElements * static_cast<std::size_t>(blur_.ramp.peak),
                    ring_ + pitch_ * static_cast<std::size_t>(nextSlot_));
      ++rows_;
      nextSlot_ = nextSlot_ + 1 == slots_ ? 0 : nextSlot_ + 1;
    }
  }

  /// Adds the rows first..last `sign` times. All rows above the image are its first one, all rows
  /// below it its last one: each of them is one step.
  void addRows(const BlurRun& run, int first, int last, int sign) {
    const int bottom = blur_.height - 1;
    for (int y = first; y <= last;) {
      const int next = y >= bottom ? last + 1 : std::min(std::max(y, 0), last) + 1;
      const auto weight = static_cast<Sum>(sign * (next - y));
      const Row* row = ring_ + rowAt(std::clamp(y, 0, bottom)) + run.at;
      Sum* __restrict sums = sums_ + run.at;
      for (std::size_t i = 0; i < run.count; ++i) {
        sums[i] = static_cast<Sum>(sums[i] + weight * row[i]);
      }
      y = next;
    }
  }

  /// Moves both ends of the run's boxes, by one row in the kernel to come or by any number of rows
  /// right away. A ramp's radii fall once and rise once, so that even with steep ones the ends take
  /// no more than the image's rows and a few peaks of steps in all.
  void moveBoxes(BlurRun& run, Box& box, Box next) {
    if (next.first == box.first + 1 && next.last == box.last + 1) {
      run.entering = rowAt(std::min(next.last, blur_.height - 1));
      run.leaving = rowAt(std::max(box.first, 0));
    } else {
      addRows(run, box.last + 1, next.last, 1);
      addRows(run, next.last + 1, box.last, -1);
      addRows(run, next.first, box.first - 1, 1);
      addRows(run, box.first, next.first - 1, -1);
      run.entering = run.leaving = 0;  // any row that cancels out
    }
    box = next;
  }

  void finishRow(int y) {
    setRadii(y);
    for (int i = 0; i < runCount_; ++i) {
      moveBoxes(runs_[i], boxes_[i], {y - runs_[i].radius, y + runs_[i].radius});
    }
    const std::size_t offset = rowBytes_ * static_cast<std::size_t>(y);
    const auto width = static_cast<std::size_t>(blur_.width);
    if constexpr (std::is_same_v<Rule, Square>) {
      dropAlpha(blur_.src + offset, width, centres_);
      finishSquares(runs_, runCount_, ring_, sums_, centres_, bytes_);
    } else {
      finishMeans(runs_, runCount_, ring_, sums_, bytes_);
    }
    if (blur_.pixels == BlurPixels::kWords) {
      addAlpha(bytes_, width, blur_.dst + offset, stream_);
    } else {
      std::memcpy(blur_.dst + offset, bytes_, rowBytes_);
    }
  }

  const BoxBlur blur_;
  const std::size_t rowBytes_;  // of the pictures
  const int slots_;             // of the ring
  const bool stream_;           // past the caches
  std::size_t pitch_ = 0;       // elements of a ring row
  Sum* sums_ = nullptr;
  Row* ring_ = nullptr;
  uint16_t* prefixes_[2] = {};  // of two rows
  uint8_t* centres_ = nullptr;
  uint8_t* bytes_ = nullptr;  // of the row to be written
  int rows_ = 0;              // blurred so far
  int nextSlot_ = 0;
  BlurRun runs_[2 * kMaxBlurPeak + 1];  // peak to 0 and up again
  Box boxes_[2 * kMaxBlurPeak + 1];
  int runCount_ = 0;
};

}  // namespace

int RadiusRamp::radius(int64_t entry) const {
  const int64_t middle = entries >> 1;
  if (middle < 1) {
    return 0;
  }
  const int64_t distance = entry < middle ? middle - entry : entry - middle;
  return static_cast<int>(std::min<int64_t>(peak * distance / middle, peak));
}

void blurSeparable(const BoxBlur& blur) { Walk<Separable>(blur).run(); }

void blurSquare(const BoxBlur& blur) { Walk<Square>(blur).run(); }

}  // namespace alg
