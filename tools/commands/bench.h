// camera-effects bench: how fast the operations are on this machine.
#pragma once

#include <string>

namespace alg::tool {

struct BenchRequest {
  std::string size = "4000x3000";
  /// Regular expression, found anywhere in the name of an operation or its routine; ignores case.
  std::string filter;
  double seconds = 0.2;  ///< of repeating an operation, which runs three times at least
};

/// Prints a table of the speed of the catalogue's operations beside memcpy's, row by row. Throws
/// UserError.
void benchOperations(const BenchRequest& request);

}  // namespace alg::tool
