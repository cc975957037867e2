#include "tools/batch/shard.h"

#include <fmt/format.h>

#include <charconv>

#include "tools/shell/failure.h"

namespace alg::tool {
namespace {

/// 64-bit FNV-1a, and two rounds of MurmurHash3's finish: FNV's low bits alone depend on little
/// more than the low bits of the name.
uint64_t stableHash(std::string_view name) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char c : name) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  }
  hash = (hash ^ (hash >> 33U)) * 0xff51afd7ed558ccd;
  hash = (hash ^ (hash >> 33U)) * 0xc4ceb9fe1a85ec53;
  return hash ^ (hash >> 33U);
}

}  // namespace

Shard::Shard(const std::string& text) {
  const char* const end = text.data() + text.size();
  const auto index = std::from_chars(text.data(), end, index_);
  const bool separated = index.ec == std::errc() && index.ptr != end && *index.ptr == '/';
  const auto count = std::from_chars(separated ? index.ptr + 1 : end, end, count_);
  if (count.ec != std::errc() || count.ptr != end || index_ < 1 || index_ > count_) {
    throw WrongUse(fmt::format("--shard {}: expected I/N with I from 1 to N, as in 3/16", text));
  }
  --index_;
}

bool Shard::holds(std::string_view name) const { return stableHash(name) % count_ == index_; }

}  // namespace alg::tool
