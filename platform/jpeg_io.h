// Where a JPEG file's bytes come from and go to. The codec calls these in the middle of its work,
// so none of them may throw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>

#include "base/block.h"

namespace alg {

/// A file's bytes, in pieces.
class JpegInput {
 public:
  virtual ~JpegInput() = default;
  /// The next bytes, which stay valid until the next call; none at the end, or if reading fails.
  virtual std::span<const uint8_t> next() = 0;
  /// Goes back to the first byte; false if that is not possible. Needed only for files that end
  /// inside the header of a later scan.
  virtual bool rewind() = 0;
};

/// A file in memory, which stays the caller's.
class JpegBytes final : public JpegInput {
 public:
  explicit JpegBytes(std::span<const uint8_t> file) : file_(file) {}
  std::span<const uint8_t> next() override;
  bool rewind() override;

 private:
  std::span<const uint8_t> file_;
  bool given_ = false;
};

/// Takes a file's bytes, through room that it offers.
class JpegOutput {
 public:
  virtual ~JpegOutput() = default;
  /// Room for the next bytes; none: memory is short.
  virtual std::span<uint8_t> room() = 0;
  /// The first `bytes` bytes of that room are written; false ends encoding (kOutputFailed).
  virtual bool take(std::size_t bytes) = 0;
  /// Whether bytes had no place (encoding then ends with kOutputFull).
  virtual bool full() const { return false; }
};

/// Fills a buffer of the caller's and counts what does not fit.
class JpegBuffer final : public JpegOutput {
 public:
  explicit JpegBuffer(std::span<uint8_t> buffer) : buffer_(buffer) {}
  std::span<uint8_t> room() override;
  bool take(std::size_t bytes) override;
  bool full() const override { return size_ > buffer_.size(); }
  /// Bytes of the file so far, or in all; the buffer holds the first of them.
  std::size_t size() const { return size_; }

 private:
  std::span<uint8_t> buffer_;
  std::size_t size_ = 0;
  uint8_t excess_[4096];  ///< takes what does not fit
};

/// Grows a malloc'ed block.
class JpegBlock final : public JpegOutput {
 public:
  /// @param guess  bytes to begin with; memory that is never written is never taken
  explicit JpegBlock(std::size_t guess) : guess_(guess) {}
  std::span<uint8_t> room() override;
  bool take(std::size_t bytes) override;
  std::size_t size() const { return size_; }
  Block release() { return std::move(block_); }

 private:
  Block block_;
  std::size_t guess_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
};

/// Hands pieces of up to 64 KB to a function; false ends encoding.
class JpegSink final : public JpegOutput {
 public:
  explicit JpegSink(std::function<bool(std::span<const uint8_t>)> write);
  std::span<uint8_t> room() override;
  bool take(std::size_t bytes) override;

 private:
  std::function<bool(std::span<const uint8_t>)> write_;
  Block piece_;
};

}  // namespace alg
