// camera-effects: the library from the command line. Here: what all commands have in common in
// their arguments; errors, signals and exit codes.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

#include "tools/commands/commands.h"
#include "tools/files/device_root.h"
#include "tools/files/file_errors.h"
#include "tools/shell/console.h"
#include "tools/shell/interrupts.h"

namespace alg::tool {
namespace {

int codeOf(ExitCode code) { return static_cast<int>(code); }

ExitCode codeAfter(const std::error_code& error) {
  return mayPass(error.value()) ? ExitCode::kTryAgain : ExitCode::kFailed;
}

/// A file that is opened must not come to be the standard output or error, which messages go to.
void fillStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {  // closed, so this opens just that; its use fails as before
      std::ignore = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

/// The arguments, last one first, as the parser wants them. What follows "--" is no option: a name
/// that begins with a dash is given its folder.
std::vector<std::string> argumentsOf(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + std::max(argc, 1));
  const auto mark = std::ranges::find(arguments, "--");
  if (mark != arguments.end()) {
    std::for_each(mark + 1, arguments.end(), [](std::string& name) {
      name = name.size() > 1 && name.starts_with('-') ? "./" + name : name;
    });
    arguments.erase(mark);
  }
  std::ranges::reverse(arguments);
  return arguments;
}

int work(const std::function<bool()>& command) {
  try {
    const bool succeeded = command();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      throw TryAgain("cannot write to the standard output");
    }
    return codeOf(succeeded ? ExitCode::kDone : ExitCode::kFailed);
  } catch (const Interrupted& interrupted) {
    std::signal(interrupted.signal, SIG_DFL);
    std::raise(interrupted.signal);  // so that the caller sees what ended us
  } catch (const UserError& error) {
    complain(error.what());
    return codeOf(error.code());
  } catch (const std::bad_alloc&) {
    complain("not enough memory");
    return codeOf(ExitCode::kTryAgain);
  } catch (const std::filesystem::filesystem_error& error) {
    complain(error.path1().string() + ": " + error.code().message());
    return codeOf(codeAfter(error.code()));
  } catch (const std::system_error& error) {  // printing has failed
    complain("cannot write to the standard output: " + error.code().message());
    return codeOf(codeAfter(error.code()));
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return codeOf(ExitCode::kFailed);
}

/// What all options and arguments have in common: flags take no value, and no value is empty, as
/// that of a script's unset variable would be.
void addChecks(CLI::App& command) {
  for (CLI::Option* const option : command.get_options()) {
    if (option->get_items_expected_max() == 0) {
      option->disable_flag_override();
    } else {
      option->check([](const std::string& text) { return text.empty() ? "it is empty" : ""; }, "");
    }
  }
}

/// The exit code of a command line that asks for no work: help, version or wrong use.
int explain(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    return work([&] { return app.exit(error) == 0; });
  }
  const auto chosen = app.get_subcommands();
  const auto unknown = app.remaining();
  if (chosen.empty() && !unknown.empty()) {
    complain("unknown command or option \"" + unknown.front() + "\"; see camera-effects --help");
    return codeOf(ExitCode::kWrongUse);
  }
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  complain(std::string(error.what()) + "; see camera-effects" + command + " --help");
  return codeOf(ExitCode::kWrongUse);
}

}  // namespace

int run(int argc, char** argv) {
  fillStandardStreams();
  CLI::App app("Photo effects, conversion, rotation, resizing and blending with libAlgorithm.",
               "camera-effects");
  app.set_version_flag("--version", "camera-effects " ALGORITHM_VERSION);
  app.require_subcommand(1);
  app.footer(
      "\"camera-effects COMMAND --help\" shows the options of a command and examples.\n\n"
      "Exit codes: 0, all is done; 1, some photos of several failed, or a place can't be written, "
      "a\n"
      "picture is missing, the engine failed; 2, the command line is wrong; 3, the input is "
      "missing\n"
      "or damaged, for good; 75, no memory, no room or an I/O error, worth another try.");
  Options options;
  addCommands(app, options);
  for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
    addChecks(*command);
  }
  try {
    app.parse(argumentsOf(argc, argv));
  } catch (const CLI::ParseError& error) {
    return explain(app, error);
  }
  deferInterrupts();
  useSamplePictures();
  return work(options.work);
}

}  // namespace alg::tool

int main(int argc, char** argv) {
  try {
    return alg::tool::run(argc, argv);
  } catch (...) {  // not even the message about the reason could be printed
    return EXIT_FAILURE;
  }
}
