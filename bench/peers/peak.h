// The most arithmetic that this machine does.
#pragma once

namespace alg::bench {

/// Independent additions of 16-bit lanes in the widest vectors, a second, on one thread; the best
/// of a few tries.
double peakOperations();

}  // namespace alg::bench
