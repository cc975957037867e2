#include "codec/band_passage.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <utility>

#include "base/block.h"

namespace alg {
namespace {

/// Bytes of a band. Bands of half as many cost 2 % more CPU, for waking the other thread.
constexpr std::size_t kBandBytes = std::size_t{192} << 10;
/// Bands that may wait for the encoder. With fewer than two of the codec's own rows of blocks (16
/// rows of pixels each) in all, one thread waits while the other is in the middle of such a row.
constexpr int kSlots = 4;
constexpr int kFewestRows = 8;  // of a band then
/// What bands may wait in; wider images do without, so that they take little memory, too.
constexpr std::size_t kMostSlotBytes = std::size_t{2} << 20;
/// Images of fewer bytes are done before a second thread would have begun.
constexpr std::size_t kWorthAThread = std::size_t{1} << 20;

/// Memory for rows, a number of times. The codec stores to rows that lie on multiples of 16 or 32
/// bytes past the caches (x86-64), from where the encoder would have to fetch them again: half as
/// slow again. From an odd address few rows lie so, but pixels of four bytes are to be words.
class Rows {
 public:
  bool allocate(std::size_t bytes, int times, JpegPixels pixels) {
    constexpr std::size_t kLine = 64;  // bytes, of the caches
    lead_ = bytesPerPixel(pixels) == 4 ? 4 : 1;
    each_ = (bytes + kLine - 1) / kLine * kLine;
    block_ = allocateBlock(lead_ + each_ * static_cast<std::size_t>(times));
    return block_ != nullptr;
  }
  uint8_t* at(int time) const {
    return block_.get() + lead_ + each_ * static_cast<std::size_t>(time);
  }

 private:
  Block block_;
  std::size_t lead_ = 0;
  std::size_t each_ = 0;
};

/// Reads and works, a band at a time.
class BandMaker {
 public:
  BandMaker(const ReadRows& read, const BandLayout& layout, const JpegBandWork& work)
      : read_(read), layout_(layout), work_(work) {}

  bool allocate();
  /// Makes the next band's result.
  JpegFault make(uint8_t* result);

 private:
  JpegFault readApart(JpegBand& band);

  const ReadRows& read_;
  const BandLayout& layout_;
  const JpegBandWork& work_;
  Rows source_;        ///< if apart: a band with its halo
  int sourceRow_ = 0;  ///< the image's row that is the first in source_
  int nextRow_ = 0;    ///< the one that comes next
  int first_ = 0;      ///< the next band's first row
};

bool BandMaker::allocate() {
  const int rows = std::min(layout_.height, layout_.rows + 2 * layout_.halo);
  return !layout_.apart ||
         source_.allocate(layout_.sourceStride * static_cast<std::size_t>(rows), 1, layout_.source);
}

/// Reads what the band and its halo lack.
JpegFault BandMaker::readApart(JpegBand& band) {
  const auto at = [&](int row) {
    return source_.at(0) + static_cast<std::size_t>(row - sourceRow_) * layout_.sourceStride;
  };
  const int top = std::max(0, first_ - layout_.halo);
  const int bottom = std::min(layout_.height, first_ + band.rows + layout_.halo);
  const int next = std::exchange(nextRow_, bottom);
  std::memmove(source_.at(0), at(top), static_cast<std::size_t>(at(next) - at(top)));
  sourceRow_ = top;
  band.src = at(first_);
  band.rowsAbove = first_ - top;
  band.rowsBelow = bottom - first_ - band.rows;
  return read_(at(next), bottom - next);
}

JpegFault BandMaker::make(uint8_t* result) {
  JpegBand band{.src = result,
                .dst = result,
                .width = layout_.width,
                .rows = std::min(layout_.rows, layout_.height - first_),
                .firstRow = first_,
                .imageHeight = layout_.height};
  const JpegFault fault = layout_.apart ? readApart(band) : read_(result, band.rows);
  if (fault != JpegFault::kNone) {
    return fault;
  }
  first_ += band.rows;
  return work_(band) ? JpegFault::kNone : JpegFault::kCancelled;
}

/// Hands bands from the thread that makes them to the one that takes them. A thread that has
/// waited goes on when half of the slots are its own again: waking costs as much as a few rows.
class BandQueue {
 public:
  BandQueue(BandMaker& maker, const BandLayout& layout) : maker_(maker), layout_(layout) {}
  ~BandQueue();
  BandQueue(const BandQueue&) = delete;
  BandQueue& operator=(const BandQueue&) = delete;

  bool allocate() { return slots_.allocate(layout_.bandBytes(), slotCount(), layout_.result); }
  /// False if the system has no thread left.
  bool start();
  /// The next band's result, which stays until the next call; null after a fault.
  const uint8_t* take();
  JpegFault fault() const { return fault_; }

 private:
  void makeAll();
  bool waitForSlot();
  uint8_t* slot(int band) const { return slots_.at(band % slotCount()); }
  int slotCount() const { return std::min(kSlots, layout_.bands); }

  BandMaker& maker_;
  const BandLayout& layout_;
  Rows slots_;
  pthread_t thread_{};
  bool threaded_ = false;
  std::mutex lock_;  // for what follows
  std::condition_variable slotsFree_, bandsMade_;
  int made_ = 0;
  int taken_ = 0;  ///< bands whose slots are free again
  bool handedOut_ = false;
  bool stopped_ = false;
  JpegFault fault_ = JpegFault::kNone;
};

BandQueue::~BandQueue() {
  if (threaded_) {
    {
      const std::lock_guard guard(lock_);
      stopped_ = true;
    }
    slotsFree_.notify_one();
    pthread_join(thread_, nullptr);
  }
}

bool BandQueue::start() {
  const auto run = [](void* queue) -> void* {
    static_cast<BandQueue*>(queue)->makeAll();
    return nullptr;
  };
  threaded_ = pthread_create(&thread_, nullptr, run, this) == 0;
  return threaded_;
}

bool BandQueue::waitForSlot() {
  std::unique_lock guard(lock_);
  if (made_ - taken_ == slotCount()) {
    slotsFree_.wait(guard, [&] { return stopped_ || made_ - taken_ <= slotCount() / 2; });
  }
  return !stopped_;
}

void BandQueue::makeAll() {
  for (int band = 0; band < layout_.bands && waitForSlot(); ++band) {
    const JpegFault fault = maker_.make(slot(band));
    bool wake = false;
    {
      const std::lock_guard guard(lock_);
      made_ += fault == JpegFault::kNone ? 1 : 0;
      fault_ = fault;
      wake = fault != JpegFault::kNone || made_ == layout_.bands ||
             2 * (made_ - taken_) >= slotCount();
    }
    if (wake) {
      bandsMade_.notify_one();
    }
    if (fault != JpegFault::kNone) {
      return;
    }
  }
}

const uint8_t* BandQueue::take() {
  std::unique_lock guard(lock_);
  if (handedOut_) {
    ++taken_;
  }
  if (made_ - taken_ <= slotCount() / 2) {
    slotsFree_.notify_one();
  }
  if (made_ == taken_) {
    bandsMade_.wait(guard, [&] {
      return fault_ != JpegFault::kNone || made_ == layout_.bands ||
             2 * (made_ - taken_) >= slotCount();
    });
  }
  handedOut_ = made_ > taken_;
  return handedOut_ ? slot(taken_) : nullptr;
}

/// Takes an image's rows from one place through work to another, on one thread or two.
class Passage {
 public:
  Passage(const ReadRows& read, const BandLayout& layout, const JpegBandWork& work,
          const WriteRows& write)
      : layout_(layout), maker_(read, layout, work), write_(write) {}

  JpegFault run();

 private:
  JpegFault writeAlone();
  JpegFault writeBeside(BandQueue& queue);
  JpegFault write(int band, const uint8_t* rows) {
    return write_(rows, std::min(layout_.rows, layout_.height - band * layout_.rows));
  }

  const BandLayout& layout_;
  BandMaker maker_;
  const WriteRows& write_;
};

JpegFault Passage::writeAlone() {
  Rows result;
  JpegFault fault = result.allocate(layout_.bandBytes(), 1, layout_.result) ? JpegFault::kNone
                                                                            : JpegFault::kNoMemory;
  for (int band = 0; band < layout_.bands && fault == JpegFault::kNone; ++band) {
    fault = maker_.make(result.at(0));
    if (fault == JpegFault::kNone) {
      fault = write(band, result.at(0));
    }
  }
  return fault;
}

JpegFault Passage::writeBeside(BandQueue& queue) {
  for (int band = 0; band < layout_.bands; ++band) {
    const uint8_t* rows = queue.take();
    if (rows == nullptr) {
      return queue.fault();
    }
    const JpegFault fault = write(band, rows);
    if (fault != JpegFault::kNone) {
      return fault;
    }
  }
  return JpegFault::kNone;
}

JpegFault Passage::run() {
  if (!maker_.allocate()) {
    return JpegFault::kNoMemory;
  }
  BandQueue queue(maker_, layout_);
  const bool beside = layout_.overlap && layout_.bands > 1 && queue.allocate() && queue.start();
  return beside ? writeBeside(queue) : writeAlone();
}

}  // namespace

BandLayout::BandLayout(int imageWidth, int imageHeight, const JpegBandOptions& options)
    : width(imageWidth),
      height(imageHeight),
      source(options.source),
      result(options.result),
      halo(std::clamp(options.halo, 0, height)),
      apart(!options.inPlace || options.halo > 0),
      sourceStride(static_cast<std::size_t>(width) * bytesPerPixel(options.source)),
      resultStride(static_cast<std::size_t>(width) * bytesPerPixel(options.result)) {
  const auto all = sourceStride * static_cast<std::size_t>(height);
  overlap = options.overlap && all >= kWorthAThread &&
            kSlots * kFewestRows * resultStride <= kMostSlotBytes;
  const auto fitting = static_cast<int>(kBandBytes / std::max(sourceStride, resultStride));
  const int chosen = std::max(fitting, overlap ? kFewestRows : 1);
  rows = std::min(options.bandRows > 0 ? options.bandRows : chosen, height);
  bands = (height + rows - 1) / rows;
}

JpegFault passRows(const ReadRows& read, const BandLayout& layout, const JpegBandWork& work,
                   const WriteRows& write) {
  return Passage(read, layout, work, write).run();
}

}  // namespace alg
