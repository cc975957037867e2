// camera-effects bench: how fast the routines are on this machine.
#pragma once

#include <string>

namespace alg::tool {

struct BenchRequest {
  std::string size = "4000x3000";
  std::string filter;  ///< regular expression, found anywhere in a routine's name; case is ignored
  double seconds = 0.2;  ///< of repeating a routine, which runs three times at least
};

/// Prints a table of the routines' speed beside memcpy's, row by row. Throws UserError.
void benchRoutines(const BenchRequest& request);

}  // namespace alg::tool
