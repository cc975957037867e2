#include "tools/commands/manual.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>
#include <string_view>

#include "tools/commands/completion.h"

namespace alg::tool {
namespace {

constexpr char kHead[] = R"(.TH CAMERA\-EFFECTS 1 "" "libAlgorithm {}" "User Commands"
.SH NAME
camera\-effects \- photo effects from the command line
.SH SYNOPSIS
.B camera\-effects
.I COMMAND
.RI [ OPTIONS ]
.RI [ ARGUMENTS ]
.SH DESCRIPTION
{}
.SH COMMANDS
)";

constexpr char kTail[] = R"(.SH EXIT STATUS
.TP
.B 0
What was asked for is done.
.TP
.B 1
Some photos of several failed; or a place can't be written, a picture is missing, the engine failed. Standard
error says why.
.TP
.B 2
The command line is wrong.
.TP
.B 3
The input is missing or damaged, for good.
.TP
.B 75
No memory, no room, or an I/O error: worth another try.
.SH ENVIRONMENT
.TP
.B ALGORITHM_DEVICE_ROOT
A folder to be put before the paths of the device's files: the effects' pictures in
.I data/data/com.android.camera/effect
and the face\-beauty engine,
.IR system/lib64/libSFB.so .
When it is not set, the pictures are the samples that come with the tool.
.SH FILES
.TP
.I PREFIX/share/libalgorithm/photo.jpg
A sample photo.
.TP
.I PREFIX/share/libalgorithm/device
The sample pictures.
)";

/// Text with everything escaped that means something to roff.
std::string roff(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool lineStart = result.empty() || result.back() == '\n';
    if (lineStart && (c == '.' || c == '\'')) {
      result += "\\&";
    }
    result += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  }
  return result;
}

/// "--quality N", with the value in italics; a positional argument alone.
std::string signature(const CLI::Option& option) {
  if (option.get_positional()) {
    const bool many = option.get_items_expected_max() > 1;
    return fmt::format("\\fI{}\\fR{}", roff(option.get_name()), many ? "..." : "");
  }
  std::string text = fmt::format("\\fB{}\\fR", roff(option.get_name(false, true)));
  if (takesValue(option)) {
    const auto choices = choicesOf(option);
    const std::string type = option.get_type_name();  // "N:INT in [0 - 100]"
    text += choices.empty() ? fmt::format(" \\fI{}\\fR", roff(type.substr(0, type.find(':'))))
                            : fmt::format(" {}", roff(fmt::format("{}", fmt::join(choices, "|"))));
  }
  return text;
}

std::string entry(const CLI::Option& option) {
  std::string about = option.get_description();
  if (option.get_positional() && !choicesOf(option).empty()) {
    about += fmt::format(": {}", fmt::join(choicesOf(option), ", "));
  }
  if (!option.get_default_str().empty()) {
    about += fmt::format("; {} when not given", option.get_default_str());
  } else if (option.get_required() && !option.get_positional()) {
    about += "; must be given";
  }
  return fmt::format(".TP\n{}\n{}\n", signature(option), roff(about));
}

/// A footer: paragraphs, and lines that start with spaces as they are.
std::string paragraphs(const std::string& footer) {
  std::istringstream lines(footer);
  std::string text = ".PP\n";
  bool verbatim = false;
  for (std::string line; std::getline(lines, line);) {
    const bool indented = line.starts_with("  ");
    if (indented != verbatim) {
      text += indented ? ".PP\n.nf\n.RS 2\n" : ".RE\n.fi\n";
      verbatim = indented;
    }
    text += line.empty() ? ".PP\n" : roff(indented ? line.substr(2) : line) + "\n";
  }
  return text + (verbatim ? ".RE\n.fi\n" : "");
}

std::string section(const CLI::App& command) {
  std::string usage = roff(command.get_name());
  std::string entries;
  for (const CLI::Option* option : optionsOf(command, true)) {
    usage += " " + signature(*option);
    entries += entry(*option);
  }
  for (const CLI::Option* option : optionsOf(command, false)) {
    if (option != command.get_help_ptr()) {
      entries += entry(*option);
    }
  }
  return fmt::format(".SS {}\n{}.\n{}{}", usage, roff(command.get_description()), entries,
                     paragraphs(command.get_footer()));
}

}  // namespace

std::string manualPage(const CLI::App& app) {
  std::string page = fmt::format(kHead, ALGORITHM_VERSION, roff(app.get_description()));
  for (const CLI::App* command : shownCommands(app)) {
    page += section(*command);
  }
  return page + kTail;
}

}  // namespace alg::tool
