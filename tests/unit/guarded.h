// Buffers that crash on the first byte read or written outside, and comparison of byte blocks.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <span>

#include "reference.h"

/// Repeatable bytes without a pattern, so that shifted or unwritten ones show.
inline Bytes noise(int size, int seed = 1) {
  Bytes bytes(asSize(size));
  uint32_t state = uint32_t(seed) * 2654435761u + 12345u;
  for (uint8_t& byte : bytes) byte = uint8_t((state = state * 1664525u + 1013904223u) >> 24);
  return bytes;
}

/// A copy of some bytes with an inaccessible page directly behind (or directly before) it.
class Guarded {
 public:
  explicit Guarded(const Bytes& content, bool pageBefore = false)
      : size_(content.size()), mapped_((size_ + 4095) / 4096 * 4096 + 4096) {
    base_ = static_cast<uint8_t*>(
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    data_ = base_ + (pageBefore ? 4096 : mapped_ - 4096 - size_);
    EXPECT_EQ(mprotect(pageBefore ? base_ : data_ + size_, 4096, PROT_NONE), 0);
    std::copy(content.begin(), content.end(), data_);
  }
  ~Guarded() { munmap(base_, mapped_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  uint8_t* data() const { return data_; }
  Bytes bytes() const { return {data_, data_ + size_}; }

 private:
  std::size_t size_, mapped_;
  uint8_t *base_, *data_;
};

/// Equality that names the first difference instead of printing both blocks.
inline testing::AssertionResult same(std::span<const uint8_t> got,
                                     std::span<const uint8_t> expected) {
  if (got.size() != expected.size()) return testing::AssertionFailure() << "size " << got.size();
  const auto at = std::mismatch(got.begin(), got.end(), expected.begin());
  if (at.first == got.end()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "byte " << at.first - got.begin() << " of " << got.size()
                                     << " is " << +*at.first << ", not " << +*at.second;
}

constexpr std::pair<int, int> kSizesBelowOne[] = {{0, 4}, {4, 0}, {-4, 4}, {4, -4}, {-4, -4}};
