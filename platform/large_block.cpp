#include "platform/large_block.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace alg {

Block allocateLargeBlock(std::size_t bytes) {
  constexpr std::size_t kWorthIt = std::size_t{4} << 20;  // two large pages
  Block block = allocateBlock(bytes);
  if (block && bytes >= kWorthIt) {
    // From the start of the page that the block starts in. Only a hint: systems may ignore it.
    const std::size_t lead =
        reinterpret_cast<uintptr_t>(block.get()) % static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    madvise(block.get() - lead, bytes + lead, MADV_HUGEPAGE);
  }
  return block;
}

}  // namespace alg
