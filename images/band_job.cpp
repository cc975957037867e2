#include "images/band_job.h"

#include <algorithm>

namespace alg {
namespace {

constexpr int kStepPixels = 8192;  // that are worked on at a time, in the first-level cache
constexpr int kHalosPerBand = 3;

}  // namespace

BandJob::BandJob(const Job& job, int width, int height)
    : job_(job), pictures_(job), width_(width), height_(height) {}

bool BandJob::takesCodecPixels() const {
  const Operation& operation = *job_.operation;
  const bool packed =
      operation.pixels == Pixels::kPackedRgb || operation.pixels == Pixels::kPackedBgr;
  return packed && operation.bands == Bands::kAny && !operation.readsDestination &&
         job_.weight == kWholeWeight;
}

bool BandJob::prepare(JpegBandOptions& options, bool codecPixels) {
  const Operation& operation = *job_.operation;
  direct_ = codecPixels && takesCodecPixels();
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

}  // namespace alg
