// Memory and threads that fail on demand, and a log that takes no memory.
#pragma once

#include <cstddef>

/// From now on allocation number `count` (from 0, on any thread) fails; with `andAllLater` those
/// after it, too.
void failAllocation(int count, bool andAllLater);
/// Ends that. Returns whether one has failed.
bool stopFailing();
/// Blocks that are allocated now.
long liveBlocks();

/// Thread number `count` (from 0) that is made from now on fails; -1 ends that.
void failThread(int count);

/// Log lines since the last call: of priority 6, and all.
struct LogCount {
  int errors, all;
};
LogCount takeLogCount();
