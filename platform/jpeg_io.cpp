#include "platform/jpeg_io.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "platform/large_block.h"

namespace alg {

std::span<const uint8_t> JpegBytes::next() {
  return std::exchange(given_, true) ? std::span<const uint8_t>() : file_;
}

bool JpegBytes::rewind() {
  given_ = false;
  return true;
}

std::span<uint8_t> JpegBuffer::room() {
  return size_ < buffer_.size() ? buffer_.subspan(size_) : std::span<uint8_t>(excess_);
}

bool JpegBuffer::take(std::size_t bytes) {
  size_ += bytes;
  return true;
}

std::span<uint8_t> JpegBlock::room() {
  if (!block_) {
    block_ = allocateLargeBlock(guess_);
    capacity_ = block_ ? guess_ : 0;
  } else if (size_ == capacity_ && capacity_ <= std::numeric_limits<std::size_t>::max() / 2) {
    if (void* larger = std::realloc(block_.get(), 2 * capacity_)) {
      (void)block_.release();
      block_.reset(static_cast<uint8_t*>(larger));
      capacity_ *= 2;
    }
  }
  return {block_.get() + size_, capacity_ - size_};
}

bool JpegBlock::take(std::size_t bytes) {
  size_ += bytes;
  return true;
}

JpegSink::JpegSink(std::function<bool(std::span<const uint8_t>)> write)
    : write_(std::move(write)) {}

namespace {
constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
}

std::span<uint8_t> JpegSink::room() {
  if (!piece_) {
    piece_ = allocateBlock(kPieceBytes);
  }
  return {piece_.get(), piece_ ? kPieceBytes : 0};
}

bool JpegSink::take(std::size_t bytes) {
  return bytes == 0 || write_(std::span<const uint8_t>(piece_.get(), bytes));
}

}  // namespace alg
