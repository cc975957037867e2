// Malloc'ed blocks for whole images.
#pragma once

#include <cstddef>

#include "base/block.h"

namespace alg {

/// allocateBlock() for blocks of megabytes, which malloc gets fresh from the system: faulting them
/// in page by page costs a third of what decoding a JPEG into them does, so the system is asked for
/// large pages. Memory that is never written is never taken. Blocks start where malloc puts them:
/// starting on a large page would gain only 2 % of a 12-megapixel conversion.
Block allocateLargeBlock(std::size_t bytes);

}  // namespace alg
