// camera-effects: the library from the command line. Here: errors, signals and exit codes.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <string>
#include <system_error>

#include "tools/commands/commands.h"
#include "tools/files/device_root.h"
#include "tools/files/file_errors.h"
#include "tools/shell/console.h"
#include "tools/shell/interrupts.h"

namespace alg::tool {
namespace {

int codeOf(ExitCode code) { return static_cast<int>(code); }

/// The exit code of a command line that asks for no work: help, version or wrong use.
int explain(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() == 0) {
    return app.exit(error);
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
  } catch (const std::system_error& error) {  // printing has failed
    complain(error.what());
    return codeOf(mayPass(error.code().value()) ? ExitCode::kTryAgain : ExitCode::kFailed);
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return codeOf(ExitCode::kFailed);
}

}  // namespace

int run(int argc, char** argv) {
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
  try {
    app.parse(argc, argv);
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
