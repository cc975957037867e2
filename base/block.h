// An owned malloc'ed block: memory that is given to Java must come from malloc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace alg {

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};

using Block = std::unique_ptr<uint8_t[], FreeBlock>;

/// `bytes` uninitialised bytes; null when memory is short.
inline Block allocateBlock(std::size_t bytes) {
  return Block(static_cast<uint8_t*>(std::malloc(bytes)));
}

}  // namespace alg
