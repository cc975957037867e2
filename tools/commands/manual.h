// The manual page, written from the commands themselves.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace alg::tool {

/// The page in roff, for section 1.
std::string manualPage(const CLI::App& app);

}  // namespace alg::tool
