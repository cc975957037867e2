// One walk down the image. Each source row is summed up from its left end, so that any box across
// is the difference of two of these prefix sums; the results wait in a ring of rows. Below that,
// every column has the running sum of its box, from which the destination row comes.
//
//   source row -> prefix sums -> ring row --- + entering, - leaving ---> column sums -> dst row
//
// Columns of equal radius form a run: all loops go over the neighbouring elements (bytes of pixels)
// of one run. A ramp down the rows makes one run of all columns, whose radius changes.
#include "kernels/box_blur.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/block.h"
#include "base/image_size.h"

namespace alg {
namespace {

// Prefix sums wrap at 16 bits. Their differences are exact as long as a box across fits.
static_assert((2 * kMaxBlurPeak + 1) * 255 <= 0xFFFF);

/// (sum x trunc(65536 / n)) >> 16 with factors of 16 bits, which suit vectors. The 65536 for n = 1
/// has 17: there it is twice the sum by 32768.
struct LineMean {
  uint16_t scale, reciprocal;

  uint8_t of(int sum) const {
    const auto scaled = static_cast<uint16_t>(sum * scale);
    return static_cast<uint8_t>((uint32_t{scaled} * reciprocal) >> 16);
  }
};

// By radius. Values that come from a table of this width are what lets GCC multiply 16 bits by 16.
struct Means {
  LineMean line[kMaxBlurPeak + 1];
  uint32_t square[kMaxBlurPeak + 1];  // trunc(65536 / n)
};

constexpr Means kMeans = [] {
  Means means{};
  for (int r = 0; r <= kMaxBlurPeak; ++r) {
    const int side = 2 * r + 1;
    means.line[r] =
        r == 0 ? LineMean{2, 0x8000} : LineMean{1, static_cast<uint16_t>(0x10000 / side)};
    means.square[r] = 0x10000 / static_cast<uint32_t>(side * side + 4);
  }
  return means;
}();

/// Both passes round to bytes.
struct Separable {
  using Row = uint8_t;
  using Sum = uint16_t;

  static void across(const uint16_t* from, const uint16_t* to, Row* __restrict row,
                     std::size_t count, int radius) {
    const LineMean mean = kMeans.line[radius];
    for (std::size_t i = 0; i < count; ++i) {
      row[i] = mean.of(static_cast<uint16_t>(to[i] - from[i]));
    }
  }

  static void finish(const Sum* sums, const uint8_t* /*centres*/, uint8_t* __restrict dst,
                     std::size_t count, int radius) {
    const LineMean mean = kMeans.line[radius];
    for (std::size_t i = 0; i < count; ++i) {
      dst[i] = mean.of(sums[i]);
    }
  }
};

/// Rows keep their exact sums; they are divided in the end, with four more centres.
struct Square {
  using Row = uint16_t;
  using Sum = uint32_t;

  static void across(const uint16_t* from, const uint16_t* to, Row* __restrict row,
                     std::size_t count, int /*radius*/) {
    for (std::size_t i = 0; i < count; ++i) {
      row[i] = static_cast<uint16_t>(to[i] - from[i]);
    }
  }

  static void finish(const Sum* sums, const uint8_t* centres, uint8_t* __restrict dst,
                     std::size_t count, int radius) {
    const uint32_t reciprocal = kMeans.square[radius];
    for (std::size_t i = 0; i < count; ++i) {
      dst[i] = static_cast<uint8_t>(((sums[i] + uint32_t{4} * centres[i]) * reciprocal) >> 16);
    }
  }
};

template <class Rule>
class Walk {
  using Row = typename Rule::Row;
  using Sum = typename Rule::Sum;

 public:
  explicit Walk(const BoxBlur& blur)
      : blur_(blur),
        channels_(blur.pixels == BlurPixels::kWords ? kArgbBytes : kPackedBytes),
        pitch_(static_cast<std::size_t>(channels_) * static_cast<std::size_t>(blur.width)),
        slots_(std::min(2 * blur.ramp.peak + 2, blur.height)) {}

  void run() {
    if (blur_.width < 1 || blur_.height < 1) {
      return;
    }
    const std::size_t prefixes =
        pitch_ + static_cast<std::size_t>(channels_ * (2 * blur_.ramp.peak + 1));
    const std::size_t ringElements = pitch_ * static_cast<std::size_t>(slots_);
    const Block block = allocateBlock(pitch_ * sizeof(Sum) + prefixes * sizeof(uint16_t) +
                                      ringElements * sizeof(Row));
    if (block == nullptr) {
      return;
    }
    sums_ = reinterpret_cast<Sum*>(block.get());
    prefixes_ = reinterpret_cast<uint16_t*>(sums_ + pitch_);
    ring_ = reinterpret_cast<Row*>(prefixes_ + prefixes);
    std::fill_n(sums_, pitch_, Sum{0});
    findRuns();
    // A row of dst is written after that row of src was read: the two may be the same.
    for (int y = 0; y < blur_.height; ++y) {
      while (rows_ < blur_.height && rows_ <= y + blur_.ramp.peak) {
        blurNextRow();
      }
      finishRow(y);
    }
  }

 private:
  struct Run {
    std::size_t begin, count;  // elements
    int radius;                // of columns; unused when the ramp goes down the rows
    int first, last;           // the rows in the sums, some of them outside the image
  };

  void findRuns() {
    const auto channels = static_cast<std::size_t>(channels_);
    for (int x = 0; x < blur_.width; ++x) {
      const bool byColumn = blur_.axis == RampAxis::kColumns;
      const int radius = byColumn ? blur_.ramp.radius(int64_t{blur_.firstEntry} + x) : 0;
      if (runCount_ == 0 || runs_[runCount_ - 1].radius != radius) {
        runs_[runCount_++] = {channels * static_cast<std::size_t>(x), 0, radius, 0, -1};
      }
      runs_[runCount_ - 1].count += channels;
    }
  }

  int radiusAt(const Run& run, int y) const {
    return blur_.axis == RampAxis::kColumns ? run.radius
                                            : blur_.ramp.radius(int64_t{blur_.firstEntry} + y);
  }

  /// A row that is still in the ring: one of the last slots_ that were blurred.
  const Row* rowAt(int y) const {
    const int slot = nextSlot_ - (rows_ - y);
    return ring_ + pitch_ * static_cast<std::size_t>(slot < 0 ? slot + slots_ : slot);
  }

  /// Prefix sums go on over `count` pixels that are `step` bytes apart. Alpha is carried along like
  /// a colour and dropped in the end.
  template <int kChannels>
  static uint16_t* sumUp(const uint8_t* pixel, int step, int count, uint16_t* prefix) {
    for (int i = 0; i < count; ++i, pixel += step, prefix += kChannels) {
      for (int k = 0; k < kChannels; ++k) {
        const uint8_t value = pixel[kChannels == kPackedBytes ? 2 - k : k];
        prefix[kChannels + k] = static_cast<uint16_t>(prefix[k] + value);
      }
    }
    return prefix;
  }

  /// Element i of the prefix sums belongs to the pixels before i, of a row with `peak` repeated
  /// pixels on either side.
  template <int kChannels>
  void sumUpRow(const uint8_t* row) {
    const int peak = blur_.ramp.peak;
    std::fill_n(prefixes_, kChannels, uint16_t{0});
    uint16_t* prefix = sumUp<kChannels>(row, 0, peak, prefixes_);
    prefix = sumUp<kChannels>(row, kChannels, blur_.width, prefix);
    sumUp<kChannels>(row + pitch_ - kChannels, 0, peak, prefix);
  }

  void blurNextRow() {
    const uint8_t* row = blur_.src + pitch_ * static_cast<std::size_t>(rows_);
    if (channels_ == kArgbBytes) {
      sumUpRow<kArgbBytes>(row);
    } else {
      sumUpRow<kPackedBytes>(row);
    }
    Row* slot = ring_ + pitch_ * static_cast<std::size_t>(nextSlot_);
    for (int i = 0; i < runCount_; ++i) {
      const Run& run = runs_[i];
      const int radius = radiusAt(run, rows_);
      const uint16_t* centre = prefixes_ + run.begin + channels_ * blur_.ramp.peak;
      Rule::across(centre - channels_ * radius, centre + channels_ * (radius + 1), slot + run.begin,
                   run.count, radius);
    }
    ++rows_;
    nextSlot_ = nextSlot_ + 1 == slots_ ? 0 : nextSlot_ + 1;
  }

  static void slide(Sum* __restrict sums, const Row* entering, const Row* leaving,
                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      sums[i] = static_cast<Sum>(sums[i] + entering[i] - leaving[i]);
    }
  }

  static void addWeighted(Sum* __restrict sums, const Row* row, Sum weight, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      sums[i] = static_cast<Sum>(sums[i] + weight * row[i]);
    }
  }

  /// Adds the rows first..last `sign` times. All rows above the image are its first one, all rows
  /// below it its last one: each of them is one step.
  void addRows(const Run& run, int first, int last, int sign) {
    const int bottom = blur_.height - 1;
    for (int y = first; y <= last;) {
      const int next = y >= bottom ? last + 1 : std::min(std::max(y, 0), last) + 1;
      addWeighted(sums_ + run.begin, rowAt(std::clamp(y, 0, bottom)) + run.begin,
                  static_cast<Sum>(sign * (next - y)), run.count);
      y = next;
    }
  }

  /// Moves both ends of the run's boxes. A ramp's radii fall once and rise once, so that even with
  /// steep ones the ends take no more than the image's rows and a few peaks of steps in all.
  void moveBoxes(Run& run, int first, int last) {
    const int bottom = blur_.height - 1;
    if (first == run.first + 1 && last == run.last + 1) {
      slide(sums_ + run.begin, rowAt(std::min(last, bottom)) + run.begin,
            rowAt(std::max(run.first, 0)) + run.begin, run.count);
    } else {
      addRows(run, run.last + 1, last, 1);
      addRows(run, last + 1, run.last, -1);
      addRows(run, first, run.first - 1, 1);
      addRows(run, run.first, first - 1, -1);
    }
    run.first = first;
    run.last = last;
  }

  void finishRow(int y) {
    const std::size_t offset = pitch_ * static_cast<std::size_t>(y);
    for (int i = 0; i < runCount_; ++i) {
      Run& run = runs_[i];
      const int radius = radiusAt(run, y);
      moveBoxes(run, y - radius, y + radius);
      Rule::finish(sums_ + run.begin, blur_.src + offset + run.begin,
                   blur_.dst + offset + run.begin, run.count, radius);
    }
    if (blur_.pixels == BlurPixels::kWords) {
      clearAlpha(blur_.dst + offset);
    }
  }

  void clearAlpha(uint8_t* row) const {
    for (int x = 0; x < blur_.width; ++x, row += kArgbBytes) {
      uint32_t word;
      std::memcpy(&word, row, sizeof(word));
      word &= 0x00FFFFFF;
      std::memcpy(row, &word, sizeof(word));
    }
  }

  const BoxBlur blur_;
  const int channels_;
  const std::size_t pitch_;  // elements of a row
  const int slots_;          // of the ring
  Sum* sums_ = nullptr;
  uint16_t* prefixes_ = nullptr;
  Row* ring_ = nullptr;
  int rows_ = 0;  // blurred so far
  int nextSlot_ = 0;
  Run runs_[2 * kMaxBlurPeak + 1];  // peak to 0 and up again
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
