#include "images/work_rows.h"

#include <algorithm>
#include <cstring>

#include "platform/large_block.h"

namespace alg {
namespace {

/// Whether bytes 0 and 2 of a 4-byte pixel are exchanged in the pixels that the operation takes.
ByteOrder orderFor(const Operation& operation, bool redFirst) {
  const bool wantsRed = operation.pixels == Pixels::kPackedRgb;
  return wantsRed == redFirst ? ByteOrder::kKept : ByteOrder::kExchanged;
}

ByteOrder opposite(ByteOrder order) {
  return order == ByteOrder::kKept ? ByteOrder::kExchanged : ByteOrder::kKept;
}

}  // namespace

JobRows::JobRows(const Job& job, const JobPictures& pictures, int width, int imageHeight,
                 int mostRows)
    : job_(job),
      pictures_(pictures),
      width_(width),
      imageHeight_(imageHeight),
      apart_(job.operation->overlap == Overlap::kApart || job.operation->readsDestination),
      capacity_(bytesOf(mostRows)) {
  const Operation& operation = *job.operation;
  std::size_t blocks = apart_ ? 2 : 1;
  for (const PictureRole& role : operation.pictures) {
    blocks += role.size == PictureRole::Size::kSameAsImage ? 1 : 0;
  }
  memory_ = allocateLargeBlock(blocks * capacity_ + 4 * static_cast<std::size_t>(width));
  if (!memory_) {
    return;
  }
  uint8_t* next = memory_.get();
  const auto take = [&] {
    uint8_t* const block = next;
    next += capacity_;
    return block;
  };
  source_ = take();
  result_ = apart_ ? take() : source_;
  std::size_t index = 0;
  for (const PictureRole& role : operation.pictures) {
    sameSize_[index++] = role.size == PictureRole::Size::kSameAsImage ? take() : nullptr;
  }
  row_ = next;
  if (operation.softLight != nullptr) {
    softLight_.emplace(operation.softLight(),
                       Overlay{pictures[0].pixels, pictures[0].width, pictures[0].height}, width,
                       imageHeight);
  }
}

bool JobRows::ready() const { return memory_ != nullptr && (!softLight_ || softLight_->ready()); }

std::size_t JobRows::bytesOf(int rows) const {
  return alg::bytesOf(job_.operation->pixels,
                      static_cast<std::size_t>(width_) * static_cast<std::size_t>(rows));
}

void JobRows::begin(int firstRow) {
  firstRow_ = firstRow;
  loaded_ = 0;
}

void JobRows::load(const Image& src, const Image& dst) {
  const Operation& operation = *job_.operation;
  for (int k = 0; k < src.height; ++k) {
    const int y = firstRow_ + loaded_ + k;
    loadRow(y, src.row(k), orderFor(operation, src.redFirst));
    if (isBlend() && operation.readsDestination) {
      colourRow(dst.row(k), dst.row(k), at(result_, y), static_cast<std::size_t>(width_),
                dst.orderTo(src));
    }
  }
  loadPictures(src, src.height);
  loaded_ += src.height;
}

void JobRows::loadRow(int y, const uint8_t* pixels, ByteOrder order) {
  const Operation& operation = *job_.operation;
  const auto width = static_cast<std::size_t>(width_);
  uint8_t* const to = at(source_, y);
  if (operation.pixels == Pixels::kWords) {
    std::memcpy(to, pixels, 4 * width);
    return;
  }
  if (operation.pixels == Pixels::kInts) {
    packRow(pixels, row_, width, order);
    std::copy_n(row_, 3 * width, reinterpret_cast<int*>(to));
    return;
  }
  packRow(pixels, to, width, order);
  if (operation.readsDestination) {  // what it leaves alone shows the source
    if (operation.backdrop >= 0) {
      std::memset(at(result_, y), operation.backdrop, 3 * width);
    } else {
      packRow(pixels, at(result_, y), width, opposite(order));
    }
  }
}

void JobRows::loadPictures(const Image& src, int rows) {
  for (std::size_t index = 0; index < kMostPictures; ++index) {
    for (int k = 0; k < rows && sameSize_[index] != nullptr; ++k) {
      const int y = firstRow_ + loaded_ + k;
      const uint8_t* const pixels = job_.pictures[index].row(y);
      colourRow(pixels, pixels, at(sameSize_[index], y), static_cast<std::size_t>(width_),
                job_.pictures[index].orderTo(src));
    }
  }
}

void JobRows::run() {
  if (softLight_) {
    softLight_->mapRows(source_, result_, firstRow_, loaded_);
    return;
  }
  Call call;
  call.src = source_;
  call.dst = result_;
  call.width = width_;
  call.height = loaded_;
  call.firstRow = firstRow_;
  call.imageHeight = imageHeight_;
  std::ranges::copy(job_.values, call.values);
  for (std::size_t index = 0; index < kMostPictures; ++index) {
    call.pictures[index] = pictures_[index];
    if (sameSize_[index] != nullptr) {  // the loaded rows are an image of their own then
      call.pictures[index] = {sameSize_[index], width_, loaded_};
      call.firstRow = 0;
      call.imageHeight = loaded_;
    }
  }
  job_.operation->run(call);
}

/// The result's row as bytes, three for each pixel or four.
const uint8_t* JobRows::resultRow(int y) {
  uint8_t* const row = at(result_, y);
  if (job_.operation->pixels == Pixels::kInts) {
    const auto* const values = reinterpret_cast<const int*>(row);
    for (std::size_t i = 0; i < 3 * static_cast<std::size_t>(width_); ++i) {
      row[i] = static_cast<uint8_t>(values[i]);  // behind which lie the values that are still read
    }
  }
  return row;
}

void JobRows::store(int firstRow, const Image& src, const Image& dst) {
  const auto width = static_cast<std::size_t>(width_);
  const bool words = job_.operation->pixels == Pixels::kWords;
  const ByteOrder order = src.orderTo(dst);
  // The operation has crossed what it was given in its own order.
  const ByteOrder crossed = opposite(orderFor(*job_.operation, src.redFirst));
  for (int k = 0; k < dst.height; ++k) {
    const uint8_t* const result = resultRow(firstRow + k);
    const uint8_t* const alpha = isBlend() ? result : src.row(k);
    const bool whole = job_.weight == kWholeWeight;
    uint8_t* const to = whole ? dst.row(k) : row_;
    const ByteOrder way = whole ? order : ByteOrder::kKept;
    if (words) {
      colourRow(result, alpha, to, width, way);
    } else {
      unpackRow(result, alpha, to, width, way == ByteOrder::kKept ? crossed : opposite(crossed));
    }
    if (!whole) {
      mixRow(src.row(k), row_, row_, 4 * width, job_.weight);
      colourRow(row_, row_, dst.row(k), width, order);
    }
  }
}

}  // namespace alg
