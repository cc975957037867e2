#include "images/jpeg_job.h"

#include <algorithm>
#include <optional>

#include "codec/jpeg_bands.h"
#include "images/work_rows.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"
#include "platform/large_block.h"

namespace alg {
namespace {

constexpr int kStepPixels = 8192;  // that are worked on at a time, in the first-level cache
constexpr int kHalosPerBand = 3;

/// A job on bands of packed rows.
class BandJob {
 public:
  BandJob(const Job& job, const JpegInfo& info)
      : job_(job), pictures_(job), width_(info.width), height_(info.height) {
    const Operation& operation = *job.operation;
    const bool packed =
        operation.pixels == Pixels::kPackedRgb || operation.pixels == Pixels::kPackedBgr;
    direct_ = packed && operation.bands == Bands::kAny && !operation.readsDestination &&
              job.weight == kWholeWeight;
  }

  /// Whether there was memory.
  bool prepare(JpegBandOptions& options);
  bool run(const JpegBand& band);

 private:
  void runDirectly(const JpegBand& band);
  void runRows(int first, int count, const Image& src, const JpegBand& band);

  const Job& job_;
  const JobPictures pictures_;
  const int width_, height_;
  bool direct_;  ///< the codec delivers and takes just what the operation does
  int stepRows_ = 0;
  std::optional<JobRows> rows_;
  std::optional<SoftLightImage> softLight_;
};

bool BandJob::prepare(JpegBandOptions& options) {
  const Operation& operation = *job_.operation;
  if (direct_) {
    const bool rgb = operation.pixels == Pixels::kPackedRgb;
    options.source = rgb ? JpegPixels::kRgb : JpegPixels::kBgr;
    options.result = rgb ? JpegPixels::kBgr : JpegPixels::kRgb;
    options.inPlace = operation.overlap != Overlap::kApart;
    if (operation.softLight != nullptr) {
      softLight_.emplace(operation.softLight(),
                         Overlay{pictures_[0].pixels, pictures_[0].width, pictures_[0].height},
                         width_, height_);
    }
    return pictures_.ready() && (!softLight_ || softLight_->ready());
  }
  stepRows_ = kStepPixels / width_ + 1;
  if (operation.bands == Bands::kNear) {
    options.halo = operation.halo;
    options.inPlace = false;
    options.bandRows = std::max(stepRows_, kHalosPerBand * operation.halo);
    stepRows_ = options.bandRows;
  }
  rows_.emplace(job_, pictures_, width_, height_, stepRows_ + 2 * options.halo);
  return pictures_.ready() && rows_->ready();
}

bool BandJob::run(const JpegBand& band) {
  if (isCancelled(job_)) {
    return false;
  }
  if (direct_) {
    runDirectly(band);
    return true;
  }
  const std::ptrdiff_t stride = std::ptrdiff_t{4} * width_;
  const Image src{const_cast<uint8_t*>(band.src), width_, band.rows, stride, false};
  for (int first = 0; first < band.rows; first += stepRows_) {
    runRows(first, std::min(stepRows_, band.rows - first), src, band);
  }
  return true;
}

void BandJob::runDirectly(const JpegBand& band) {
  auto* const src = const_cast<uint8_t*>(band.src);
  if (softLight_) {
    softLight_->mapRows(src, band.dst, band.firstRow, band.rows);
    return;
  }
  Call call;
  call.src = src;
  call.dst = band.dst;
  call.width = width_;
  call.height = band.rows;
  call.firstRow = band.firstRow;
  call.imageHeight = height_;
  std::ranges::copy(job_.values, call.values);
  for (std::size_t i = 0; i < kMostPictures; ++i) {
    call.pictures[i] = pictures_[i];
  }
  job_.operation->run(call);
}

void BandJob::runRows(int first, int count, const Image& src, const JpegBand& band) {
  const Image dst{band.dst, width_, band.rows, src.stride, false};
  const Image all = src.rows(first - band.rowsAbove, band.rowsAbove + count + band.rowsBelow);
  rows_->begin(band.firstRow + first - band.rowsAbove);
  rows_->load(all, all);
  rows_->run();
  rows_->store(band.firstRow + first, src.rows(first, count), dst.rows(first, count));
}

/// For operations that need the whole image.
JpegFault runOnWhole(const Job& job, std::span<const uint8_t> file, const JpegInfo& info,
                     JpegOutput& output, int quality) {
  JpegBytes input(file);
  JpegReader reader(input, JpegReader::Segments::kKeep);
  std::size_t segmentBytes = 0;
  const Image image{nullptr, info.width, info.height, std::ptrdiff_t{4} * info.width, false};
  const Block pixels = allocateLargeBlock(image.rowBytes() * static_cast<std::size_t>(info.height));
  const Image whole{pixels.get(), info.width, info.height, image.stride, false};
  if (!pixels) {
    return JpegFault::kNoMemory;
  }
  reader.start({});
  reader.read(whole.pixels, whole.rowBytes(), whole.height);
  if (reader.finish() != JpegFault::kNone) {
    return reader.fault();
  }
  const JobOutcome outcome = runJob(job, whole, whole);
  if (outcome != JobOutcome::kDone) {
    return outcome == JobOutcome::kNoMemory ? JpegFault::kNoMemory : JpegFault::kCancelled;
  }
  const Block segments = reader.segments(segmentBytes);
  JpegWriter writer(output);
  writer.start({.width = info.width,
                .height = info.height,
                .quality = quality,
                .segments = {segments.get(), segmentBytes}});
  writer.write(whole.pixels, whole.rowBytes(), whole.height);
  return writer.finish();
}

}  // namespace

JpegFault runJobOnJpeg(const Job& job, std::span<const uint8_t> file, const JpegInfo& info,
                       JpegOutput& output, int quality) {
  if (job.operation->bands == Bands::kWholeImage) {
    return runOnWhole(job, file, info, output, quality);
  }
  JpegBandOptions options;
  options.quality = quality;
  BandJob bands(job, info);
  if (!bands.prepare(options)) {
    return JpegFault::kNoMemory;
  }
  JpegBytes input(file);
  return transcodeJpeg(input, output, options,
                       [&](const JpegBand& band) { return bands.run(band); })
      .fault;
}

}  // namespace alg
