#include "base/streamed.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace alg {
namespace {

/// Several times the second-level caches of desktop machines.
constexpr std::size_t kLarge = std::size_t{16} << 20;

bool isMapped(const uint8_t* byte, std::size_t pageBytes) {
  unsigned char resident = 0;
  const uint8_t* page = byte - reinterpret_cast<std::uintptr_t>(byte) % pageBytes;
  return mincore(const_cast<uint8_t*>(page), 1, &resident) == 0 && (resident & 1) != 0;
}

}  // namespace

bool isStreamed(const void* bytes, std::size_t size) {
  if (!kHasSuchStores || size < kLarge) return false;
  const auto* first = static_cast<const uint8_t*>(bytes);
  const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  constexpr std::size_t kSamples = 4;
  for (std::size_t i = 0; i <= kSamples; ++i) {
    if (!isMapped(first + (size - 1) / kSamples * i, pageBytes)) return false;
  }
  return true;
}

}  // namespace alg
