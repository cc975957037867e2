// One walk down the image. Each source row is summed up from its left end, so that any box across
// is the difference of two of these prefix sums; the results wait in a ring of rows. Below that,
// every column has the running sum of its box, from which the destination row comes.
//
//   source row -> prefix sums -> ring row --- + entering, - leaving ---> column sums -> dst row
//
// Columns of equal radius form a run: all kernels go over the neighbouring elements (colours of
// pixels) of one run. A ramp down the rows gives all columns one radius, which changes. Runs are no
// longer than a stretch: between stretches the rows are fetched that the walk takes next, because
// kernels work in the cache, and without that the memory would wait meanwhile.
#include "kernels/box_blur.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

#include "base/block.h"
#include "base/image_size.h"
#include "base/streamed.h"
#include "kernels/box_blur_rows.h"
#include "kernels/overlap.h"

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
  // Pixels: whole blocks of elements. Prefix sums end without vectors, so they take more.
  static constexpr int kStretch = 256, kSumStretch = 2 * kStretch;
  static constexpr std::size_t kCacheLine = 64;

 public:
  explicit Walk(const BoxBlur& blur)
      : blur_(blur),
        rowBytes_(static_cast<std::size_t>(blur.pixels == BlurPixels::kWords ? kArgbBytes
                                                                             : kPackedBytes) *
                  static_cast<std::size_t>(blur.width)),
        slots_(std::min(2 * blur.ramp.peak + 2, blur.height)) {}

  void run() {
    if (blur_.width < 1 || blur_.height < 1) {
      return;
    }
    const Block runs = findRuns();
    const Block rows = takeMemory();
    if (runs == nullptr || rows == nullptr) {
      return;
    }
    // A row of dst is written after that row of src was read: the two may be the same.
    const std::size_t bytes = rowBytes_ * static_cast<std::size_t>(blur_.height);
    stream_ = blur_.pixels == BlurPixels::kWords && !overlap(blur_.src, bytes, blur_.dst, bytes) &&
              isStreamed(blur_.dst, bytes);
    for (int y = 0; y < blur_.height; ++y) {
      beginFetching(y);
      while (rows_ < blur_.height && rows_ <= y + blur_.ramp.peak) {
        blurNextRow();
      }
      finishRow(y);
    }
    if (stream_) {
      endStream();
    }
  }

 private:
  /// The rows whose sum a run has, some of them outside the image.
  struct Box {
    int first = 0, last = -1;
  };

  /// Null when memory is short.
  Block findRuns() {
    // Radii fall from peak to 0 and rise again.
    const int radii = 2 * blur_.ramp.peak + 1;
    const int runs = radii + blur_.width / kStretch + 1;
    const auto most = static_cast<std::size_t>(runs);
    Block block = allocateBlock(most * (sizeof(BlurRun) + sizeof(Box)));
    if (block == nullptr) {
      return block;
    }
    runs_ = new (block.get()) BlurRun[most];
    boxes_ = new (block.get() + most * sizeof(BlurRun)) Box[most];
    for (int x = 0; x < blur_.width; ++x) {
      const bool byColumn = blur_.axis == RampAxis::kColumns;
      const int radius = byColumn ? blur_.ramp.radius(int64_t{blur_.firstEntry} + x) : 0;
      if (runCount_ == 0 || runs_[runCount_ - 1].radius != radius ||
          runs_[runCount_ - 1].count == kStretch * kBlurElements) {
        endRun();
        runs_[runCount_++] = {
            .begin = kBlurElements * static_cast<std::size_t>(x), .at = pitch_, .radius = radius};
      }
      runs_[runCount_ - 1].count += kBlurElements;
    }
    endRun();
    // Three times for each stretch: prefix sums, boxes across, boxes down.
    fetchStep_ = rowBytes_ / static_cast<std::size_t>(3 * (blur_.width / kStretch + 1)) + 1;
    return block;
  }

  void endRun() {
    if (runCount_ > 0) {
      const BlurRun& run = runs_[runCount_ - 1];
      pitch_ = run.at + wholeBlocks(run.count);
    }
  }

  Block takeMemory() {
    const std::size_t elements = kBlurElements * static_cast<std::size_t>(blur_.width) + kBlurBlock;
    const std::size_t repeats = kBlurElements * static_cast<std::size_t>(2 * blur_.ramp.peak + 1);
    const std::size_t ring = pitch_ * static_cast<std::size_t>(slots_);
    Block block = allocateBlock(kCacheLine + pitch_ * sizeof(Sum) + ring * sizeof(Row) +
                                (elements + repeats) * sizeof(uint16_t) + 2 * elements);
    if (block != nullptr) {
      const auto begin = reinterpret_cast<std::uintptr_t>(block.get());
      sums_ = reinterpret_cast<Sum*>(block.get() + (kCacheLine - begin % kCacheLine));
      ring_ = reinterpret_cast<Row*>(sums_ + pitch_);
      prefixes_ = reinterpret_cast<uint16_t*>(ring_ + ring);
      centres_ = reinterpret_cast<uint8_t*>(prefixes_ + elements + repeats);
      bytes_ = centres_ + elements;
      std::fill_n(sums_, pitch_, Sum{0});
      // Kernels read up to a block behind the last element: any value will do, if it is defined.
      std::fill(reinterpret_cast<uint8_t*>(prefixes_), bytes_ + elements, uint8_t{0});
    }
    return block;
  }

  void setRadii(int y) {
    if (blur_.axis == RampAxis::kRows) {
      const int radius = blur_.ramp.radius(int64_t{blur_.firstEntry} + y);
      for (int i = 0; i < runCount_; ++i) {
        runs_[i].radius = radius;
      }
    }
  }

  /// Where a row begins that is still in the ring: one of the last slots_ that were blurred.
  std::size_t rowAt(int y) const {
    const int slot = nextSlot_ - (rows_ - y);
    return pitch_ * static_cast<std::size_t>(slot < 0 ? slot + slots_ : slot);
  }

  /// Element i of the prefix sums belongs to the pixels before i, of a row with `peak` repeated
  /// pixels on either side.
  void sumUpRow(const uint8_t* row) {
    const auto peak = static_cast<std::size_t>(blur_.ramp.peak);
    const auto width = static_cast<std::size_t>(blur_.width);
    const std::size_t pixelBytes = rowBytes_ / width;
    std::fill_n(prefixes_, kBlurElements, uint16_t{0});
    uint16_t* prefix = prefixes_;
    const auto repeat = [&](const uint8_t* pixel) {
      for (std::size_t i = 0; i < peak; ++i, prefix += kBlurElements) {
        sumUpPlain(blur_.pixels, pixel, 1, prefix);
      }
    };
    repeat(row);
    for (std::size_t x = 0; x < width; x += kSumStretch) {
      const std::size_t count = std::min<std::size_t>(width - x, kSumStretch);
      sumUp(blur_.pixels, row + pixelBytes * x, count, prefix);
      prefix += kBlurElements * count;
      fetchMore(kSumStretch / kStretch);
    }
    repeat(row + rowBytes_ - pixelBytes);
  }

  void blurNextRow() {
    sumUpRow(blur_.src + rowBytes_ * static_cast<std::size_t>(rows_));
    setRadii(rows_);
    forEachStretch([this](BlurRun* runs, int count) {
      Rule::kAcross(runs, count,
                    prefixes_ + kBlurElements * static_cast<std::size_t>(blur_.ramp.peak),
                    ring_ + pitch_ * static_cast<std::size_t>(nextSlot_));
    });
    ++rows_;
    nextSlot_ = nextSlot_ + 1 == slots_ ? 0 : nextSlot_ + 1;
  }

  /// Row y is to be written. Meanwhile the source row that is read next is fetched, and row y
  /// unless it goes past the caches.
  void beginFetching(int y) {
    const auto offset = [&](int row) {
      return rowBytes_ * static_cast<std::size_t>(std::min(row, blur_.height - 1));
    };
    source_ = blur_.src + offset(y + blur_.ramp.peak + 1);
    target_ = blur_.dst + offset(y);
    fetched_ = 0;
  }

  /// Inlined: calls that do nothing else are dropped.
  [[gnu::always_inline]] void fetchMore(std::size_t steps) {
    const std::size_t end = std::min(fetched_ + steps * fetchStep_, rowBytes_);
    std::size_t at = fetched_;
    if (kHasSuchStores && stream_) {
      for (; at < end; at += kCacheLine) {
        __builtin_prefetch(source_ + at);
      }
    } else {
      for (; at < end; at += kCacheLine) {
        __builtin_prefetch(source_ + at);
        __builtin_prefetch(target_ + at, 1);
      }
    }
    fetched_ = at;
  }

  /// Calls work(runs, count) for neighbouring runs that together are no longer than a stretch.
  template <class Work>
  void forEachStretch(Work work) {
    for (int first = 0, end = 0; first < runCount_; first = end) {
      std::size_t elements = 0;
      do {
        elements += runs_[end++].count;
      } while (end < runCount_ && elements + runs_[end].count <= kBlurElements * kStretch);
      work(runs_ + first, end - first);
      fetchMore(1);
    }
  }

  /// Adds the rows first..last `sign` times. All rows above the image are its first one, all rows
  /// below it its last one: each of them is one step.
  void addRows(const BlurRun& run, int first, int last, int sign) {
    const int bottom = blur_.height - 1;
    for (int y = first; y <= last;) {
      const int next = y >= bottom ? last + 1 : std::min(std::max(y, 0), last) + 1;
      const Row* row = ring_ + rowAt(std::clamp(y, 0, bottom)) + run.at;
      if constexpr (std::is_same_v<Rule, Square> && kOwnSquareSums) {
        addSquares(run, sign * (next - y), row, sums_ + run.at);
      } else {
        const auto weight = static_cast<Sum>(sign * (next - y));
        Sum* __restrict sums = sums_ + run.at;
        for (std::size_t i = 0; i < run.count; ++i) {
          sums[i] = static_cast<Sum>(sums[i] + weight * row[i]);
        }
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
    const std::size_t offset = rowBytes_ * static_cast<std::size_t>(y);
    const auto width = static_cast<std::size_t>(blur_.width);
    if constexpr (std::is_same_v<Rule, Square>) {
      dropAlpha(blur_.src + offset, width, centres_);
    }
    for (int i = 0; i < runCount_; ++i) {
      moveBoxes(runs_[i], boxes_[i], {y - runs_[i].radius, y + runs_[i].radius});
    }
    forEachStretch([this](BlurRun* runs, int count) {
      if constexpr (std::is_same_v<Rule, Square>) {
        finishSquares(runs, count, ring_, sums_, centres_, bytes_);
      } else {
        finishMeans(runs, count, ring_, sums_, bytes_);
      }
    });
    if (blur_.pixels == BlurPixels::kWords) {
      addAlpha(bytes_, width, blur_.dst + offset, stream_);
    } else {
      std::memcpy(blur_.dst + offset, bytes_, rowBytes_);
    }
  }

  const BoxBlur blur_;
  bool stream_ = false;         // the result goes past the caches
  const std::size_t rowBytes_;  // of the pictures
  const int slots_;             // of the ring
  std::size_t pitch_ = 0;       // elements of a ring row
  Sum* sums_ = nullptr;
  Row* ring_ = nullptr;
  uint16_t* prefixes_ = nullptr;
  uint8_t* centres_ = nullptr;
  uint8_t* bytes_ = nullptr;  // of the row to be written
  int rows_ = 0;              // blurred so far
  int nextSlot_ = 0;
  BlurRun* runs_ = nullptr;
  Box* boxes_ = nullptr;
  int runCount_ = 0;
  const uint8_t *source_ = nullptr, *target_ = nullptr;  // the rows that are fetched
  std::size_t fetchStep_ = 0, fetched_ = 0;              // bytes of each
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
