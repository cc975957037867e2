// The process-wide pool, for code that runs on it.
#pragma once

#include <cstddef>
#include <iterator>
#include <mutex>
#include <span>
#include <type_traits>

#include "libalgorithm/thread_pool.h"

namespace alg {

/// Held while the pool starts, stops or works for an effect run. Recursive: a run starts the pool,
/// and a piece of work may end the process, which waits here for the run under way.
std::recursive_mutex& poolMutex();

/// Calls callback(input, param, output) for each record, on the process-wide pool if there is one,
/// else one after the other on this thread. The caller holds poolMutex().
void runRecordsOnPool(std::span<tagT_ThreadPoolTaskInput> records, ThreadPoolTaskFunc callback);

/// Calls work(piece) for each of the pieces, up to eight of them, in the same way.
template <class Pieces, class Work>
void runOnPool(Pieces&& pieces, const Work& work) {
  constexpr std::size_t kMostPieces = 8;
  tagT_ThreadPoolTaskInput records[kMostPieces];
  std::size_t count = 0;
  for (auto& piece : pieces) {
    records[count++] = {&work, &piece, nullptr};
  }
  using Piece = std::remove_reference_t<decltype(*std::begin(pieces))>;
  runRecordsOnPool(std::span(records).first(count),
                   [](const void* input, const void* /*param*/, void* output) {
                     (*static_cast<const Work*>(input))(*static_cast<Piece*>(output));
                   });
}

}  // namespace alg
