// camera-effects completion: what shells complete, read from the commands themselves.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace alg::tool {

/// The commands that --help shows.
std::vector<const CLI::App*> shownCommands(const CLI::App& app);
/// The options of a command, or its positional arguments.
std::vector<const CLI::Option*> optionsOf(const CLI::App& command, bool positional);
/// The values that the option's check lists; none when it takes others, too.
std::vector<std::string> choicesOf(const CLI::Option& option);
/// Whether it takes a value; a flag takes none.
bool takesValue(const CLI::Option& option);

/// A script for "bash" or "zsh".
std::string completionScript(const CLI::App& app, const std::string& shell);

}  // namespace alg::tool
