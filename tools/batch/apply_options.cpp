#include "tools/batch/apply_options.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "tools/shell/file_kinds.h"

namespace alg::tool {
namespace {

constexpr char kMany[] = "Many photos";

void addWhat(CLI::App& command, ApplyRequest& request) {
  command
      .add_option("NAME", request.effects,
                  "effect name, see \"camera-effects list\", or several with commas between them")
      ->type_name("")
      ->required();
  command
      .add_option("FILES", request.paths,
                  "input and output file, - for a standard stream; or several inputs, or a folder "
                  "of photos, and last the output folder")
      ->type_name(kPhotoFile.typeName)
      ->expected(0, CLI::detail::expected_max_vector_size);
  command
      .add_option("--mix", request.mix, "how much of the result is laid over the photo, in percent")
      ->type_name("PERCENT")
      ->capture_default_str()
      ->check(CLI::Range(0.0, 100.0))
      ->check(
          [](const std::string& text) {
            return std::isnan(std::strtod(text.c_str(), nullptr)) ? "not a number" : "";
          },
          "");
  command.add_flag("--as-frame", request.asFrame,
                   "let the Pretty effects work on a camera frame made of the photo, as the "
                   "application does, byte for byte");
  command.add_flag("--preserve", request.keepTimes, "give outputs the times of their inputs");
  command.add_flag("--no-clobber", request.noClobber, "never replace a file");
  command.add_flag("--recursive", request.recursive,
                   "also take photos from sub-folders; the output folder gets the same ones");
}

void addNames(CLI::App& command, ApplyRequest& request) {
  CLI::Option* const list =
      command
          .add_option("--files-from", request.list,
                      "file with names of inputs, one a line; - for the standard input")
          ->type_name(kAnyFile.typeName)
          ->group(kMany);
  command
      .add_flag("-0,--null", request.nulSeparated, "those names end with NUL instead of a newline")
      ->needs(list)
      ->group(kMany);
  command
      .add_option(
          "--output", request.names,
          "name of each output, with {dir}, {name}, {stem}, {ext} of its input and {effect}; "
          "FILES are inputs only")
      ->type_name("TEMPLATE")
      ->group(kMany);
  command.add_flag("--skip-existing", request.skipExisting, "leave out inputs that have an output")
      ->group(kMany);
  command
      .add_option("--shard", request.shard,
                  "do the I-th of N parts only; all machines agree who does what")
      ->type_name("I/N")
      ->group(kMany);
}

void addRun(CLI::App& command, ApplyRequest& request) {
  command
      .add_option("--jobs", request.threads,
                  "photos to work on at once; by default, one for each processor that it may use")
      ->type_name("N")
      ->check(CLI::Range(1, kMostThreads))
      ->group(kMany);
  command
      .add_option("--memory", request.memory,
                  "for all photos at once, as in 800M or 2G; by default, half of what is left")
      ->transform(CLI::AsSizeValue(false))
      ->type_name("SIZE")
      ->group(kMany);
  command
      .add_option("--report", request.report,
                  "file for a line of JSON a photo; - for the standard output")
      ->type_name(kAnyFile.typeName)
      ->group(kMany);
  command.add_flag("--dry-run", request.dryRun, "print what would be done, and change nothing")
      ->group(kMany);
  CLI::Option* const quiet = command.add_flag_callback(
      "--quiet", [&request] { request.verbosity = Verbosity::kQuiet; }, "say nothing but errors");
  CLI::Option* const verbose = command.add_flag_callback(
      "--verbose", [&request] { request.verbosity = Verbosity::kVerbose; },
      "say what becomes of each photo");
  quiet->group(kMany)->excludes(verbose);
  verbose->group(kMany);
}

}  // namespace

void addApplyOptions(CLI::App& command, ApplyRequest& request) {
  addWhat(command, request);
  addNames(command, request);
  addRun(command, request);
}

}  // namespace alg::tool
