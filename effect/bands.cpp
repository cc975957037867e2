#include "effect/bands.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <optional>

#include "base/block.h"
#include "base/image_size.h"
#include "convert/frame_convert.h"
#include "effect/strip_effect.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

// A band should fit in the first-level cache together with its rows of the frame.
constexpr std::ptrdiff_t kBandBytes = std::ptrdiff_t{24} * 1024;

/// Of a strip, where it has that many bands. Enough for tasks to end at nearly the same time, and
/// few enough for memory to be read in long runs.
constexpr int kPieces = 16;

/// What all tasks share: the frame's strips, cut into pieces of a few bands, which tasks take one
/// after the other. So none waits for another that has a slower core, or shares its core.
class Strips {
 public:
  Strips(const ChosenEffect& effect, const Frame& frame, int bandRows)
      : pieceRows_(std::max(1, frame.height / kStrips / kPieces / bandRows) * bandRows) {
    for (int i = 0; i < kStrips; ++i) {
      const Strip strip = stripOf(frame.height, kStrips, i);
      // Only effects that pass frames through have a single strip.
      strips_[i] = {rowsOf(frame, strip),
                    bandOf(effect.picture(), effect.strips(), i % effect.strips()), pieces_};
      pieces_ += (strip.rows + pieceRows_ - 1) / pieceRows_;
    }
  }

  struct WholeStrip {
    Frame rows;
    PictureView picture;
    int firstPiece;
  };

  struct Piece {
    const WholeStrip* strip;  // null: none is left
    Strip rows;               // within the strip
  };

  Piece take() {
    const int piece = taken_.fetch_add(1, std::memory_order_relaxed);
    if (piece >= pieces_) {
      return {nullptr, {}};
    }
    int last = kStrips - 1;
    while (strips_[last].firstPiece > piece) {
      --last;
    }
    const WholeStrip& strip = strips_[last];
    const int row = (piece - strip.firstPiece) * pieceRows_;
    return {&strip, {row, std::min(pieceRows_, strip.rows.height - row)}};
  }

 private:
  const int pieceRows_;  // of whole bands
  WholeStrip strips_[kStrips];
  int pieces_ = 0;
  std::atomic<int> taken_ = 0;
};

/// A task, with its own memory for a band and for the effect.
class BandTask {
 public:
  BandTask(const ChosenEffect& effect, const Frame& frame, int bandRows)
      : effect_(effect.operation(), bandOf(effect.picture(), effect.strips(), 0), frame.width,
                frame.height),
        band_(allocateBlock(static_cast<std::size_t>(bandRows) * kPackedBytes *
                            static_cast<std::size_t>(frame.width))),
        bandRows_(bandRows) {}

  bool ready() const { return band_ != nullptr && effect_.ready(); }

  void run(Strips& strips) {
    const Strips::WholeStrip* strip = nullptr;
    for (auto piece = strips.take(); piece.strip != nullptr; piece = strips.take()) {
      if (piece.strip != strip) {
        strip = piece.strip;
        effect_.moveTo(strip->picture, strip->rows.height);
      }
      const int end = piece.rows.firstRow + piece.rows.rows;
      for (int row = piece.rows.firstRow; row < end; row += bandRows_) {
        mapBand(rowsOf(strip->rows, {row, std::min(bandRows_, end - row)}), row);
      }
    }
  }

 private:
  void mapBand(const Frame& band, int firstRow) {
    forEachPart(band, [](const Frame& part, uint8_t* pixels) {
      decodeFrame(RowFormat::kPackedUV, pixels, {part.y, part.uv, part.yStride, part.width},
                  part.width, part.height);
    });
    effect_.mapRows(band_.get(), band_.get(), firstRow, band.height);
    forEachPart(band, [](const Frame& part, uint8_t* pixels) {
      encodeFrame(RowFormat::kPackedUV, pixels, {part.y, part.uv, part.yStride, part.width},
                  part.width, part.height);
    });
  }

  /// Parts whose chroma has no padding: the whole band, or each of its chroma rows.
  template <class Convert>
  void forEachPart(const Frame& band, const Convert& convert) {
    const int rows = band.uvStride == band.width ? band.height : 2;
    for (int row = 0; row < band.height; row += rows) {
      convert(rowsOf(band, {row, std::min(rows, band.height - row)}),
              band_.get() + std::ptrdiff_t{kPackedBytes} * band.width * row);
    }
  }

  StripEffect effect_;
  Block band_;
  const int bandRows_;  // even
};

/// Even.
int rowsOfBand(int width) {
  const std::ptrdiff_t pairBytes = std::ptrdiff_t{2} * kPackedBytes * width;
  return 2 * static_cast<int>(std::max<std::ptrdiff_t>(1, kBandBytes / pairBytes));
}

}  // namespace

bool bandsFit(const Frame& frame, bool truePadding) {
  return frame.width % 2 == 0 && frame.height % 2 == 0 &&
         (truePadding || frame.uvStride == frame.width);
}

bool runBands(const ChosenEffect& effect, const Frame& frame) {
  const int bandRows = rowsOfBand(frame.width);
  Strips strips(effect, frame, bandRows);
  std::optional<BandTask> tasks[kStrips];
  for (auto& task : tasks) {
    task.emplace(effect, frame, bandRows);
    if (!task->ready()) {
      return false;
    }
  }
  runOnPool(tasks, [&](std::optional<BandTask>& task) { task->run(strips); });
  return true;
}

}  // namespace alg
