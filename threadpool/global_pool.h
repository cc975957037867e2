// The process-wide pool, for code that runs on it.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <type_traits>

#include "libalgorithm/thread_pool.h"

namespace alg {

/// A lock with two queues: whoever waits for a preview's frame gets it before all who want it for
/// the next band of a photo; within a queue the first comes first. A photo gives it back after each
/// band, so that a preview waits for one band at most, however many photos there are. Photos wait
/// as long as previews do. Recursive.
class PoolLock {
 public:
  enum class Turn : uint8_t { kPreview, kPhoto };

  constexpr PoolLock() = default;
  PoolLock(const PoolLock&) = delete;
  PoolLock& operator=(const PoolLock&) = delete;

  void lock() { lock(Turn::kPreview); }
  void lock(Turn turn);
  void unlock();
  /// How many threads are in a queue.
  unsigned waiting(Turn turn);

 private:
  bool isNext(Turn turn, unsigned ticket) const;

  struct Queue {
    unsigned issued = 0;
    unsigned called = 0;
  };

  // Never destroyed: a thread may wait here while the process ends.
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t changed_ = PTHREAD_COND_INITIALIZER;
  Queue queues_[2];
  pthread_t owner_{};
  int depth_ = 0;
};

/// Holds a lock for a band of a photo.
class PhotoTurn {
 public:
  explicit PhotoTurn(PoolLock& lock) : lock_(lock) { lock_.lock(PoolLock::Turn::kPhoto); }
  ~PhotoTurn() { lock_.unlock(); }
  PhotoTurn(const PhotoTurn&) = delete;
  PhotoTurn& operator=(const PhotoTurn&) = delete;

 private:
  PoolLock& lock_;
};

/// Held while the pool starts, stops or works. Recursive: a run starts the pool, and a piece of
/// work may end the process, which waits here for whoever holds it.
PoolLock& poolLock();

/// Calls callback(input, param, output) for each record, on the process-wide pool if there is one,
/// else one after the other on this thread. The caller holds poolLock().
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
