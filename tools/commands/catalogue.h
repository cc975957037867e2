// The catalogue of operations for scripts, which write documents from it.
#pragma once

namespace alg::tool {

/// Prints all operations to stdout as a JSON array, with every fact that documents state.
void printCatalogue();

}  // namespace alg::tool
