#include "codec/jpeg_bands.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <utility>

#include "base/block.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"

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
/// Rows of a band that goes into a store. They become columns of a turned image: pieces of its rows
/// of one or two cache lines.
constexpr int kStoreRows = 32;

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

/// The shape of the bands.
struct Layout {
  Layout(int imageWidth, int imageHeight, const JpegBandOptions& options);

  std::size_t bandBytes() const { return resultStride * static_cast<std::size_t>(rows); }

  int width, height;
  JpegPixels source, result;
  int halo;
  bool apart;  ///< source and result have buffers of their own
  std::size_t sourceStride, resultStride;
  bool overlap;
  int rows;  ///< of a band; the last one may have fewer
  int bands;
};

Layout::Layout(int imageWidth, int imageHeight, const JpegBandOptions& options)
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

/// Where rows come from, packed, and where they go.
using ReadRows = std::function<JpegFault(uint8_t* to, int rows)>;
using WriteRows = std::function<JpegFault(const uint8_t* from, int rows)>;

/// Reads and works, a band at a time.
class BandMaker {
 public:
  BandMaker(const ReadRows& read, const Layout& layout, const JpegBandWork& work)
      : read_(read), layout_(layout), work_(work) {}

  bool allocate();
  /// Makes the next band's result.
  JpegFault make(uint8_t* result);

 private:
  JpegFault readApart(JpegBand& band);

  const ReadRows& read_;
  const Layout& layout_;
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
  BandQueue(BandMaker& maker, const Layout& layout) : maker_(maker), layout_(layout) {}
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
  const Layout& layout_;
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
  Passage(const ReadRows& read, const Layout& layout, const JpegBandWork& work,
          const WriteRows& write)
      : layout_(layout), maker_(read, layout, work), write_(write) {}

  JpegFault run();

 private:
  JpegFault writeAlone();
  JpegFault writeBeside(BandQueue& queue);
  JpegFault write(int band, const uint8_t* rows) {
    return write_(rows, std::min(layout_.rows, layout_.height - band * layout_.rows));
  }

  const Layout& layout_;
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

/// A file through a store, if there is one, and work into another file.
class Transcoder {
 public:
  Transcoder(JpegReader& reader, JpegOutput& output, const JpegBandOptions& options,
             const JpegBandWork& work)
      : reader_(reader), writer_(output), options_(options), work_(work) {}

  JpegFault run();

 private:
  JpegFault startReader(JpegPixels pixels);
  JpegFault throughStore();
  JpegFault encode(const ReadRows& read);

  JpegReader& reader_;
  JpegWriter writer_;
  const JpegBandOptions& options_;
  const JpegBandWork& work_;
  ReadRows decode_;
  int width_ = 0, height_ = 0;  ///< of the rows that come next
  Block carried_;               ///< segments of the file, until they are written
  std::size_t carriedBytes_ = 0;
};

JpegFault Transcoder::startReader(JpegPixels pixels) {
  const JpegFault fault = reader_.start(
      {.pixels = pixels, .reduction = options_.reduction, .rowWork = options_.rowWork});
  width_ = reader_.width();
  height_ = reader_.height();
  decode_ = [this, stride = static_cast<std::size_t>(width_) * bytesPerPixel(pixels)](uint8_t* to,
                                                                                      int rows) {
    return reader_.read(to, stride, rows) == rows ? JpegFault::kNone : reader_.fault();
  };
  if (fault == JpegFault::kNone && options_.carrySegments) {
    carried_ = reader_.segments(carriedBytes_);
    if (carriedBytes_ > 0 && !carried_) {
      return JpegFault::kNoMemory;
    }
  }
  return fault;
}

JpegFault Transcoder::encode(const ReadRows& read) {
  const JpegFault fault = writer_.start(
      {.width = width_,
       .height = height_,
       .pixels = options_.result,
       .quality = options_.quality,
       .tables = options_.tables,
       .sampling = options_.sampling,
       .segments = options_.carrySegments ? std::span<const uint8_t>(carried_.get(), carriedBytes_)
                                          : options_.segments});
  carried_.reset();
  if (fault != JpegFault::kNone) {
    return fault;
  }
  const Layout layout(width_, height_, options_);
  const WriteRows write = [&](const uint8_t* rows, int count) {
    return writer_.write(rows, layout.resultStride, count);
  };
  return Passage(read, layout, work_, write).run();
}

/// Decodes the whole file before it encodes what the store makes of it.
JpegFault Transcoder::throughStore() {
  JpegRowStore& store = *options_.store;
  const bool redFirst = options_.source == JpegPixels::kRgb || options_.source == JpegPixels::kRgba;
  const JpegPixels pixels = redFirst ? JpegPixels::kRgba : JpegPixels::kBgra;
  JpegFault fault = startReader(pixels);
  if (fault != JpegFault::kNone) {
    return fault;
  }
  const Layout layout(
      width_, height_,
      {.source = pixels, .result = pixels, .overlap = options_.overlap, .bandRows = kStoreRows});
  if (!store.begin(width_, height_, options_.source)) {
    return JpegFault::kNoMemory;
  }
  const JpegBandWork none = [](const JpegBand&) { return true; };
  const WriteRows put = [&](const uint8_t* rows, int count) {
    store.put(rows, count);
    return JpegFault::kNone;
  };
  fault = Passage(decode_, layout, none, put).run();
  fault = fault == JpegFault::kNone ? reader_.finish() : fault;  // gives its memory back
  return fault != JpegFault::kNone ? fault : encode([&](uint8_t* to, int rows) {
    store.get(to, rows);
    return JpegFault::kNone;
  });
}

JpegFault Transcoder::run() {
  JpegFault fault = JpegFault::kNone;
  if (options_.store != nullptr) {
    fault = throughStore();
  } else {
    fault = startReader(options_.source);
    fault = fault == JpegFault::kNone ? encode(decode_) : fault;
    fault = fault == JpegFault::kNone ? reader_.finish() : fault;
  }
  return fault == JpegFault::kNone ? writer_.finish() : fault;
}

}  // namespace

JpegBandResult transcodeJpeg(JpegInput& input, JpegOutput& output, const JpegBandOptions& options,
                             const JpegBandWork& work) {
  JpegReader reader(
      input, options.carrySegments ? JpegReader::Segments::kKeep : JpegReader::Segments::kDrop);
  JpegBandResult result;
  result.fault = reader.fault();
  if (result.fault == JpegFault::kNone) {
    result.fault = Transcoder(reader, output, options, work).run();
  }
  result.damage = reader.damage();
  result.width = reader.width();
  result.height = reader.height();
  return result;
}

}  // namespace alg
