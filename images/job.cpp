#include "images/job.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

#include "images/frames.h"
#include "images/work_rows.h"
#include "threadpool/global_pool.h"

namespace alg {
namespace {

/// Pixels that are worked on at a time, in the first-level cache.
constexpr int kStepPixels = 8192;
/// Pixels that one thread does before the pool's lock is given back.
constexpr int kPiecePixels = 1 << 18;
/// Images of fewer pixels are done before four threads would have begun.
constexpr int kWorthThePool = 1 << 15;
/// With a halo, pieces have so many times its rows: the halo is loaded and worked on for each.
constexpr int kHalosPerPiece = 6;
constexpr int kPieces = 4;

constexpr int roundUpToEven(int value) { return value + value % 2; }

/// Where rows come from and go to.
class Surface {
 public:
  explicit Surface(const Image& image) : image_(image) {}
  explicit Surface(const FrameImage& frame) : frame_(frame), isFrame_(true) {}

  bool isFrame() const { return isFrame_; }
  int width() const { return isFrame_ ? frame_.width : image_.width; }
  int height() const { return isFrame_ ? frame_.height : image_.height; }
  bool redFirst() const { return image_.redFirst; }

  /// Rows as an image: themselves, or for a frame decoded to `scratch`, which has room for two
  /// more.
  Image rows(int first, int count, uint8_t* scratch) const {
    if (!isFrame_) {
      return image_.rows(first, count);
    }
    const int even = first - first % 2;
    const int rows = roundUpToEven(first + count - even);
    const std::ptrdiff_t stride = std::ptrdiff_t{4} * frame_.width;
    const Image decoded{scratch, frame_.width, rows, stride, false};
    decodeToImage(frame_.rows(even, rows), decoded);
    return decoded.rows(first - even, count);
  }

  /// Takes rows that have been written to the result of rows(): an even number from an even one on.
  void put(int first, const Image& rows) const {
    if (isFrame_) {
      encodeFromImage(rows, frame_.rows(first, rows.height));
    }
  }

 private:
  Image image_;
  FrameImage frame_;
  bool isFrame_ = false;
};

/// What one thread does of a wave, and its work memory.
struct Piece {
  Piece(const Job& job, const JobPictures& pictures, const Surface& src, int mostLoaded)
      : rows(job, pictures, src.width(), src.height(), mostLoaded),
        scratch(src.isFrame() ? allocateBlock(4 * static_cast<std::size_t>(src.width()) *
                                              static_cast<std::size_t>(mostLoaded + 2))
                              : nullptr),
        ready(rows.ready() && (!src.isFrame() || scratch != nullptr)) {}

  JobRows rows;
  Block scratch;
  bool ready;
  int first = 0, count = 0;
  Image source;  ///< its rows as they were
};

/// A job on a surface, wave by wave: four pieces of neighbouring rows, one for each thread.
class JobRun {
 public:
  JobRun(const Job& job, const Surface& src, const Surface& dst, bool inPlace)
      : job_(job),
        pictures_(job),
        src_(src),
        dst_(dst),
        inPlace_(inPlace),
        halo_(job.operation->bands == Bands::kNear ? job.operation->halo : 0),
        width_(src.width()),
        height_(src.height()) {}

  JobOutcome run();

 private:
  bool isWhole() const { return job_.operation->bands == Bands::kWholeImage; }
  void choosePieces();
  bool allocate();
  JobOutcome runWhole(Piece& piece);
  template <class Each>
  void runWave(const Each& each);
  void runInSteps(Piece& piece);
  void loadWithHalo(Piece& piece);
  void finish(Piece& piece);
  void keepAbove(const Piece& last);
  void store(Piece& piece, int first, const Image& source);

  const Job& job_;
  const JobPictures pictures_;
  const Surface src_, dst_;
  const bool inPlace_;
  const int halo_, width_, height_;
  int pieceRows_ = 0;
  int stepRows_ = 0;  // of a piece, that are loaded at a time
  int pieceCount_ = 1;
  std::optional<Piece> pieces_[kPieces];
  int top_ = 0, next_ = 0;  // the wave's rows, and the next one's
  Image above_;             // in place: the rows above the wave as they were
  Block aboveRows_;
};

void JobRun::choosePieces() {
  const bool small = int64_t{width_} * height_ < kWorthThePool;
  if (isWhole() || (small && job_.pieceRows == 0)) {
    pieceRows_ = roundUpToEven(height_);
  } else {
    const int good = std::max({kPiecePixels / width_, kHalosPerPiece * halo_, 1});
    const int most = job_.pieceRows > 0 ? job_.pieceRows : good;
    const int fair = (height_ + kPieces - 1) / kPieces;
    pieceRows_ = roundUpToEven(std::max(std::min(most, fair), halo_));
    pieceCount_ = std::min(kPieces, (height_ + pieceRows_ - 1) / pieceRows_);
  }
  const bool inSteps = halo_ == 0 && !isWhole();
  stepRows_ = std::min(pieceRows_, inSteps ? roundUpToEven(kStepPixels / width_ + 1) : pieceRows_);
}

bool JobRun::allocate() {
  choosePieces();
  bool ready = pictures_.ready();
  for (int i = 0; i < pieceCount_ && ready; ++i) {
    ready = pieces_[i].emplace(job_, pictures_, src_, stepRows_ + 2 * halo_).ready;
  }
  if (ready && inPlace_ && halo_ > 0 && pieceCount_ > 1) {
    above_ = {nullptr, width_, halo_, std::ptrdiff_t{4} * width_, src_.redFirst()};
    aboveRows_ = allocateBlock(above_.rowBytes() * static_cast<std::size_t>(halo_));
    above_.pixels = aboveRows_.get();
    ready = above_.pixels != nullptr;
  }
  return ready;
}

JobOutcome JobRun::run() {
  if (!allocate()) {
    return JobOutcome::kNoMemory;
  }
  if (isCancelled(job_)) {
    return JobOutcome::kCancelled;
  }
  if (isWhole()) {
    return runWhole(*pieces_[0]);
  }
  for (; top_ < height_; top_ = next_) {
    if (isCancelled(job_)) {
      return JobOutcome::kCancelled;
    }
    if (pieceCount_ == 1 || !job_.onPool) {
      runWave(
          [](std::span<Piece*> pieces, const auto& work) { std::ranges::for_each(pieces, work); });
      continue;
    }
    const PhotoTurn turn(poolLock());
    HALThreadPoolInit();  // without threads the pieces are done on this one
    runWave([](std::span<Piece*> pieces, const auto& work) { runOnPool(pieces, work); });
  }
  return JobOutcome::kDone;
}

/// All rows at once, on this thread. They are loaded and stored in steps: a frame's are decoded
/// then.
JobOutcome JobRun::runWhole(Piece& piece) {
  const int step = std::max(roundUpToEven(kStepPixels / width_), 2);
  const auto forEachStep = [&](const auto& work) {
    for (int y = 0; y < height_; y += step) {
      work(y, src_.rows(y, std::min(step, height_ - y), piece.scratch.get()));
    }
  };
  piece.rows.begin(0);
  forEachStep([&](int, const Image& rows) { piece.rows.load(rows, rows); });
  piece.rows.run();
  if (isCancelled(job_)) {
    return JobOutcome::kCancelled;
  }
  forEachStep([&](int y, const Image& rows) { store(piece, y, rows); });
  return JobOutcome::kDone;
}

/// `each` calls a function for each of some pieces, and returns when all are done.
template <class Each>
void JobRun::runWave(const Each& each) {
  Piece* used[kPieces] = {};
  std::size_t count = 0;
  for (next_ = top_; next_ < height_ && count < static_cast<std::size_t>(pieceCount_); ++count) {
    Piece& piece = *(used[count] = &*pieces_[count]);
    piece.first = next_;
    piece.count = std::min(pieceRows_, height_ - next_);
    next_ += piece.count;
  }
  const auto pieces = std::span(used).first(count);
  if (halo_ == 0) {
    each(pieces, [this](Piece* piece) { runInSteps(*piece); });
  } else if (!inPlace_) {
    each(pieces, [this](Piece* piece) {
      loadWithHalo(*piece);
      finish(*piece);
    });
  } else {  // no piece may write what another one has yet to read
    each(pieces, [this](Piece* piece) { loadWithHalo(*piece); });
    keepAbove(*used[count - 1]);
    each(pieces, [this](Piece* piece) { finish(*piece); });
  }
}

void JobRun::runInSteps(Piece& piece) {
  for (int y = piece.first; y < piece.first + piece.count; y += stepRows_) {
    const int count = std::min(stepRows_, piece.first + piece.count - y);
    const Image rows = src_.rows(y, count, piece.scratch.get());
    piece.rows.begin(y);
    piece.rows.load(rows, dst_.isFrame() ? rows : dst_.rows(y, count, nullptr));
    piece.rows.run();
    store(piece, y, rows);
  }
}

void JobRun::loadWithHalo(Piece& piece) {
  const int top = std::max(piece.first - halo_, 0);
  const int bottom = std::min(piece.first + piece.count + halo_, height_);
  // The wave before has already written those above this one.
  const bool fromAbove = inPlace_ && piece.first == top_ && top < top_;
  const int first = fromAbove ? piece.first : top;
  piece.rows.begin(top);
  if (fromAbove) {
    piece.rows.load(above_, above_);
  }
  const Image rows = src_.rows(first, bottom - first, piece.scratch.get());
  piece.rows.load(rows, rows);
  piece.source = rows.rows(piece.first - first, piece.count);
}

void JobRun::finish(Piece& piece) {
  piece.rows.run();
  store(piece, piece.first, piece.source);
}

/// The last piece still has the rows as they were; it has at least as many as a halo.
void JobRun::keepAbove(const Piece& last) {
  for (int k = 0; k < halo_ && next_ < height_; ++k) {
    std::memcpy(above_.row(k), last.source.row(last.count - halo_ + k), above_.rowBytes());
  }
}

void JobRun::store(Piece& piece, int first, const Image& source) {
  const Image to = dst_.isFrame() ? source : dst_.rows(first, source.height, nullptr);
  piece.rows.store(first, source, to);
  dst_.put(first, to);
}

}  // namespace

const char* misfitOf(const Job& job, int width, int height) {
  Call call;
  call.width = width;
  call.height = height;
  std::ranges::copy(job.values, call.values);
  return job.operation->misfit != nullptr ? job.operation->misfit(call) : nullptr;
}

JobOutcome runJob(const Job& job, const Image& src, const Image& dst) {
  return JobRun(job, Surface(src), Surface(dst), src.pixels == dst.pixels).run();
}

JobOutcome runJob(const Job& job, const FrameImage& frame) {
  return JobRun(job, Surface(frame), Surface(frame), true).run();
}

}  // namespace alg
