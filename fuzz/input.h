// Turns the fuzzer's bytes into numbers, sizes, text and image contents.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>

#include "tests/unit/reference.h"

/// Takes bytes from the front; after the end it yields zeros.
class Input {
 public:
  Input(const uint8_t* data, std::size_t size) : rest_(data, size) {}

  uint8_t byte() {
    if (rest_.empty()) return 0;
    const uint8_t value = rest_.front();
    rest_ = rest_.subspan(1);
    return value;
  }

  /// 0..2^32 - 1 from four bytes, the lowest first.
  uint32_t word() {
    uint32_t value = 0;
    for (int shift = 0; shift < 32; shift += 8) value |= uint32_t{byte()} << shift;
    return value;
  }

  /// 0..limit from two bytes; limit is below 65536.
  int upTo(int limit) {
    const int low = byte();
    return (low | byte() << 8) % (limit + 1);
  }

  /// An element of a list of at most 256.
  template <class List>
  auto& pick(List& list) {
    return list[byte() % std::size(list)];
  }

  /// 1..limit, or 1. The first byte chooses the scale: small sizes reach more edge cases.
  int side(int limit) {
    constexpr int kScales[] = {8, 40, 300, 1 << 30};
    const int most = std::clamp(limit, 1, pick(kScales));
    return most <= 65536 ? 1 + upTo(most - 1) : 1 + int(word() % uint32_t(most));
  }

  /// Up to `limit` characters: a length, then the characters.
  std::string text(int limit) {
    std::string characters(asSize(upTo(limit)), ' ');
    for (char& character : characters) character = char(byte());
    return characters;
  }

  /// An image's bytes: noise, or the rest of the input repeated. The block has exactly that size,
  /// so that AddressSanitizer sees any access around it.
  Bytes fill(int size) {
    Bytes bytes(asSize(size));
    uint32_t state = byte();
    const bool repeats = state % 2 != 0 && !rest_.empty();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      state = state * 1664525u + 1013904223u;
      bytes[i] = repeats ? rest_[i % rest_.size()] : uint8_t(state >> 24);
    }
    return bytes;
  }

  std::span<const uint8_t> rest() const { return rest_; }

 private:
  std::span<const uint8_t> rest_;
};
