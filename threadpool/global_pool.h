// The life of the process-wide pool, for code that runs on it.
#pragma once

#include <mutex>

#include "libalgorithm/thread_pool.h"

namespace alg {

/// Held while the pool starts, stops or is at work for an effect run. Recursive: a run starts the
/// pool, and a piece of work may end the process, which waits here for the run under way.
std::recursive_mutex& poolMutex();

/// Runs callback(input, param, output) for each record, on the process-wide pool if there is one,
/// else one after the other on this thread. The caller holds poolMutex().
void runOnPool(int count, ThreadPoolTaskFunc callback, tagT_ThreadPoolTaskInput* records);

}  // namespace alg
