// Memory that fails on demand, and a log that takes no memory.
#pragma once

#include <cstddef>

/// From now on allocation number `count` (from 0, on any thread) fails; with `andAllLater` those
/// after it, too.
void failAllocation(int count, bool andAllLater);
/// Ends that. Returns whether one has failed.
bool stopFailing();
/// Blocks that are allocated now.
long liveBlocks();
/// Counts bytes from here on.
void watchBytes();
/// How many more than then have been allocated at one time since.
long mostBytes();

/// Log lines of priority 6 since the last call.
int takeErrorLines();
