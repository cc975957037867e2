// The options of camera-effects apply.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/batch/apply.h"

namespace alg::tool {

/// Adds the arguments and options, except those of single effects. Parsing fills the request, which
/// must outlive it.
void addApplyOptions(CLI::App& command, ApplyRequest& request);

}  // namespace alg::tool
