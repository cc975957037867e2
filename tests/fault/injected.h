// Memory that fails on demand, and a log that takes no memory.
#pragma once

#include <cstddef>

/// From now on, allocation number `count` (from 0, on any thread) fails; with `andAllLater` so do
/// all later ones.
void failAllocation(int count, bool andAllLater);
/// Ends that. Returns whether one has failed.
bool stopFailing();
/// Blocks that are currently allocated.
long liveBlocks();
/// Counts bytes from here on.
void watchBytes();
/// The most bytes allocated at one time since then, above what was allocated then.
long mostBytes();

/// Log lines of priority 6 since the last call.
int takeErrorLines();
