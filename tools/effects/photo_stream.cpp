#include "tools/effects/photo_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <list>
#include <new>
#include <span>
#include <system_error>
#include <utility>

#include "base/image_size.h"
#include "images/band_job.h"
#include "platform/jpeg_reader.h"
#include "tools/files/file_errors.h"
#include "tools/metadata/metadata.h"
#include "tools/photos/colour.h"
#include "tools/photos/jpeg_photo.h"
#include "tools/photos/photo_faults.h"
#include "tools/photos/picture_format.h"
#include "tools/photos/turned_rows.h"
#include "tools/shell/interrupts.h"

namespace fs = std::filesystem;

namespace alg::tool {

/// A file read in pieces. Mapped into memory, its pages would count as the process's own. Smaller
/// pieces would often end where the codec needs more bytes than are left, and it is slower there.
class JpegFile final : public JpegInput {
 public:
  explicit JpegFile(const fs::path& path) {
    struct stat status {};
    // Opening a pipe would already tell its writer that somebody reads.
    if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    }
  }
  ~JpegFile() override {
    if (file_ >= 0) {
      close(file_);
    }
  }
  JpegFile(const JpegFile&) = delete;
  JpegFile& operator=(const JpegFile&) = delete;

  bool isOpen() const { return file_ >= 0; }
  /// Of the read that failed; 0: none has.
  int error() const { return error_; }

  std::span<const uint8_t> next() override {
    if (piece_.empty()) {
      piece_.resize(kPieceBytes);
    }
    ssize_t count = -1;
    do {
      count = pread(file_, piece_.data(), piece_.size(), offset_);
    } while (count < 0 && errno == EINTR);
    error_ = count < 0 ? errno : error_;
    offset_ += std::max<ssize_t>(count, 0);
    return {piece_.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  bool rewind() override {
    offset_ = 0;
    return true;
  }
  void seek(std::size_t offset) { offset_ = static_cast<off_t>(offset); }

 private:
  static constexpr std::size_t kPieceBytes = std::size_t{256} << 10U;

  int file_ = -1;
  int error_ = 0;
  off_t offset_ = 0;
  std::vector<uint8_t> piece_;
};

namespace {

/// Whether the picture's end marker, the first one from `scan` on, ends the file, too; or there is
/// none.
bool endsWithPicture(JpegFile& file, std::size_t scan) {
  file.seek(scan);
  bool split = false;  // a piece ended between 0xFF and the marker's code
  for (Bytes piece = file.next(); !piece.empty(); piece = file.next()) {
    std::size_t at = split && piece[0] == kEndOfImage ? 0 : nextMarker(piece, 0);
    while (at < piece.size() && piece[at] != kEndOfImage) {
      at = nextMarker(piece, at);
    }
    if (at < piece.size()) {
      return at + 1 == piece.size() && file.next().empty();
    }
    split = piece.back() == 0xFF;
  }
  return true;
}

}  // namespace

/// Jobs one after the other on each band, and how much of their result is laid over it.
class BandChain {
 public:
  BandChain(const std::vector<Job>& jobs, int weight, int width, int height)
      : weight_(jobs.empty() ? kWholeWeight : weight) {
    for (const Job& job : jobs) {
      jobs_.emplace_back(job, width, height);
    }
  }

  /// Throws std::bad_alloc.
  void prepare(JpegBandOptions& options) {
    // What runs on decoded rows, and jobs after each other, have pixels of four bytes.
    const bool any = jobs_.size() == 1 && weight_ == kWholeWeight && options.rowWork == nullptr;
    for (BandJob& job : jobs_) {
      if (!job.prepare(options, any)) {
        throw std::bad_alloc();
      }
    }
    if (weight_ != kWholeWeight) {
      options.inPlace = false;  // the source is laid below
    }
  }

  bool run(JpegBand band) {
    const JpegBand first = band;
    for (BandJob& job : jobs_) {
      if (!job.run(band)) {
        return false;
      }
      band.src = band.dst;
    }
    if (weight_ != kWholeWeight) {
      mixRow(first.src, band.dst, band.dst,
             std::size_t{4} * static_cast<std::size_t>(band.width) *
                 static_cast<std::size_t>(band.rows),
             weight_);
    }
    return true;
  }

 private:
  std::list<BandJob> jobs_;  // which never move
  int weight_;
};

namespace {

bool interrupted() {
  try {
    throwIfInterrupted();
  } catch (const Interrupted&) {
    return true;
  }
  return false;
}

}  // namespace

PhotoStream::PhotoStream(const fs::path& path) : path_(path), file_(new JpegFile(path)) {}

PhotoStream::~PhotoStream() = default;

std::unique_ptr<PhotoStream> PhotoStream::open(const fs::path& input, const fs::path& output,
                                               const EffectChain& effects,
                                               const PhotoOptions& options) {
  if (!effects.fitsBands() || input == kStandardStream ||
      formatToWrite(output) != PictureFormat::kJpeg) {
    return nullptr;
  }
  std::unique_ptr<PhotoStream> photo(new PhotoStream(input));
  return photo->file_->isOpen() && photo->fits(options) ? std::move(photo) : nullptr;
}

bool PhotoStream::fits(const PhotoOptions& options) {
  if (readJpegInfo(*file_, info_) != JpegFault::kNone ||
      std::max(info_.width, info_.height) > kMostJpegSide || !readHead()) {
    return false;
  }
  orientation_ = Metadata(layout_, {}).orientation();
  if (!options.plain && !endsWithPicture(*file_, layout_.scan)) {
    bytes_ = readFile(path_);
    layout_ = layoutOf(bytes_);
  }
  return file_->error() == 0;
}

bool PhotoStream::readHead() {
  file_->rewind();
  do {
    const Bytes piece = file_->next();
    if (piece.empty() || head_.size() > kMostJpegSegmentBytes) {
      return false;
    }
    head_.insert(head_.end(), piece.begin(), piece.end());
    layout_ = layoutOf(head_);
  } while (layout_.scan == 0);
  return true;
}

std::size_t PhotoStream::memory() const {
  constexpr std::size_t kFixed = std::size_t{24} << 20U;
  constexpr std::size_t kTurnedBytesPerColumn = 2048;  // of some rows, several times
  const auto width = static_cast<std::size_t>(info_.width);
  const std::size_t pixels = width * static_cast<std::size_t>(info_.height);
  const std::size_t coefficients = info_.colours == JpegColours::kCmyk    ? 8
                                   : info_.sampling == JpegSampling::k420 ? 3
                                   : info_.sampling == JpegSampling::k422 ? 4
                                                                          : 6;
  // A gain map, perhaps as large as its photo, is turned before.
  const std::size_t turned = bytes_.empty() ? kPackedBytes : kArgbBytes;
  return kFixed + (orientation_ == 1 ? 0 : turned * pixels + kTurnedBytesPerColumn * width) +
         (info_.wholeImage ? coefficients * pixels : 0) + 4 * bytes_.size();
}

void PhotoStream::checkFault(JpegFault fault) const {
  if (file_->error() != 0) {
    failFile("read", path_, file_->error());
  }
  throwIfInterrupted();
  if (fault == JpegFault::kNoMemory || fault == JpegFault::kCancelled) {
    throw std::bad_alloc();
  }
  if (fault != JpegFault::kNone) {
    throw BadInput(whyRefused(path_, fault, info_, layout_));
  }
}

/// The photo, upright, but for its pixels.
PhotoFile PhotoStream::description() const {
  PhotoFile file{.photo = {},
                 .metadata = Metadata(layout_, path_),
                 .origin = {.path = path_},
                 .followers = bytes_.empty() ? Followers() : Followers(bytes_, layout_),
                 .change = {.orientation = orientation_}};
  file.photo.width = info_.width;
  file.photo.height = info_.height;
  if (isOnItsSide(orientation_)) {
    std::swap(file.photo.width, file.photo.height);
  }
  return file;
}

void PhotoStream::run(EffectChain& effects, const fs::path& output, const PhotoOptions& options,
                      const WriteOptions& how, bool overlap) {
  PhotoFile photo = description();
  photo.change.moved = effects.movesPixels();
  const auto transform = transformFor(info_.colours, photo.metadata, options, path_);
  const JpegRowWork work = rowWork(transform);
  const JpegSurroundings around = surroundingsOf(photo, options);
  const int width = photo.photo.width;
  const int height = photo.photo.height;
  const std::vector<Job> jobs = effects.jobs(width, height);
  TurnedRows turned(orientation_);
  const JpegCoding coding = options.coding(codingOf(info_));
  JpegBandOptions bands{.rowWork = transform ? &work : nullptr,
                        .quality = coding.quality,
                        .tables = coding.tables,
                        .sampling = coding.sampling,
                        .store = orientation_ == 1 ? nullptr : &turned,
                        .carrySegments = false,
                        .segments = around.segments,
                        .overlap = overlap};
  BandChain chain(jobs, effects.weight(), width, height);
  chain.prepare(bands);

  OutputFile file(output, how);
  std::vector<uint8_t> first;  // all, where something follows that the index has to find
  const auto write = [&](Bytes bytes) {
    if (bytes_.empty()) {
      file.write(bytes);
    } else {
      first.insert(first.end(), bytes.begin(), bytes.end());
    }
  };
  if (const JpegDamage damage = transcode(write, bands, chain)) {
    refuseOrNote(path_, options, whatIsLost(damage, info_.height));
    neverOverWhole(path_, output);
  }
  if (!bytes_.empty()) {
    around.complete(first);
  }
  file.finish(first);
}

JpegDamage PhotoStream::transcode(const std::function<void(Bytes)>& write,
                                  const JpegBandOptions& bands, BandChain& chain) {
  std::exception_ptr failed;
  JpegSink sink([&](Bytes bytes) {
    try {
      write(bytes);
      return true;
    } catch (...) {
      failed = std::current_exception();
      return false;
    }
  });
  JpegBytes whole(bytes_);
  file_->rewind();
  const JpegBandResult result =
      transcodeJpeg(bytes_.empty() ? static_cast<JpegInput&>(*file_) : whole, sink, bands,
                    [&](const JpegBand& band) { return !interrupted() && chain.run(band); });
  if (failed) {
    std::rethrow_exception(failed);
  }
  checkFault(result.fault);
  return result.damage;
}

}  // namespace alg::tool
