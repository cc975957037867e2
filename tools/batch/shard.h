// One of several parts of a list of photos, each of which another process takes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace alg::tool {

class Shard {
 public:
  /// Everything.
  Shard() = default;
  /// "I/N", I from 1 to N. Throws WrongUse.
  explicit Shard(const std::string& text);

  /// Whether a name belongs to this part. Every name belongs to just one of the N, the same one on
  /// all machines and in all versions.
  bool holds(std::string_view name) const;

 private:
  uint32_t index_ = 0;
  uint32_t count_ = 1;
};

}  // namespace alg::tool
