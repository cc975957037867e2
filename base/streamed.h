// When results should be written past the caches.
#pragma once

#include <cstddef>

namespace alg {

#if defined(__x86_64__)
inline constexpr bool kHasSuchStores = true;
#else
inline constexpr bool kHasSuchStores = false;
#endif

/// Whether stores to these bytes should go past the caches, where the machine has such stores. That
/// spares reading each line before it is written. It pays where the bytes are too many to stay in
/// a cache for their reader, and where they are mapped already, which the system is asked for a few
/// of their pages: a page that is touched for the first time has just been cleared in the cache.
bool isStreamed(const void* bytes, std::size_t size);

}  // namespace alg
