#include "tools/commands/completion.h"
#include "tools/shell/file_kinds.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <set>
#include <string_view>

#include "tools/commands/curves.h"
#include "tools/effects/effect_names.h"

namespace alg::tool {
namespace {

// Bash splits words at "=", zsh does not.
constexpr char kScript[] = R"bash(# Made by "camera-effects completion {0}".
{1}_camera_effects() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} command= option= place=0 flags= valued= choices= files= word i
  COMPREPLY=()
  [ "$COMP_CWORD" -lt 2 ] || command=${{COMP_WORDS[1]}}
  case $command in
{2}  esac

  # Which positional argument, or whose value, is to be completed.
  for ((i = 2; i < COMP_CWORD; ++i)); do
    word=${{COMP_WORDS[i]}}
    case $word in
      =) ;;
      -*) case " $valued " in *" $word "*) option=$word ;; esac ;;
      *) [ -n "$option" ] || place=$((place + 1)); option= ;;
    esac
  done
  [ "$current" != = ] || current=
  current=${{current#[\"\']}} current=${{current//\\/}}  # a name as it is, not as it is typed
  case "$command ${{option:-$place}}" in
{3}  esac
  if [ -z "$option" ]; then
    case $current in -*) choices=$flags files= ;; esac
  fi

  if [ -z "$files" ]; then
    COMPREPLY=($(compgen -W "$choices" -- "$current"))
    return
  fi
  compopt -o filenames 2>/dev/null
  while IFS= read -r word; do
    case " $files " in *" any "* | *" ${{word##*.}} "*) COMPREPLY+=("$word") ;; esac
  done < <(compgen -f -- "$current")
  [ "$files" != any ] || return
  while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -d -- "$current")
}}
complete -F _camera_effects camera-effects
)bash";

constexpr char kZshStart[] = "autoload -U +X bashcompinit && bashcompinit\n";

std::vector<std::string> optionNames(const CLI::App& command, bool withValue) {
  std::vector<std::string> names;
  for (const CLI::Option* option : optionsOf(command, false)) {
    if (!withValue || takesValue(*option)) {
      names.push_back(option->get_name());
    }
  }
  return names;
}

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : shownCommands(app)) {
    names.push_back(command->get_name());
  }
  return names;
}

/// The endings of the files that an option takes; empty when it takes none.
std::string_view endingsOf(const CLI::Option& option) {
  for (const FileKind& kind : {kPhotoFile, kPngFile, kAnyFile, kFolder}) {
    if (option.get_type_name() == kind.typeName) {
      return kind.endings;
    }
  }
  return "";
}

/// A line of the script that says what completes an option's value or a positional argument; none
/// when nothing does.
std::string valueLine(const CLI::App& command, const CLI::Option& option,
                      const std::string& place) {
  std::vector<std::string> choices = choicesOf(option);
  if (option.get_name() == "NAME") {
    const auto names = command.get_name() == "curves" ? curveEffects() : effectNames();
    const std::set<std::string_view> sorted(names.begin(), names.end());
    choices.assign(sorted.begin(), sorted.end());
  }
  const std::string set = choices.empty() ? fmt::format("files='{}'", endingsOf(option))
                                          : fmt::format("choices='{}'", fmt::join(choices, " "));
  return set == "files=''" ? ""
                           : fmt::format("    '{} '{}) {} ;;\n", command.get_name(), place, set);
}

std::string valueLines(const CLI::App& command) {
  std::string lines;
  for (const CLI::Option* option : optionsOf(command, false)) {
    if (takesValue(*option)) {
      lines += valueLine(command, *option, option->get_name());
    }
  }
  int place = 0;
  for (const CLI::Option* option : optionsOf(command, true)) {
    const bool many = option->get_items_expected_max() > 1;  // the rest of the places
    lines += valueLine(command, *option, many ? "[0-9]*" : std::to_string(place++));
  }
  return lines;
}

}  // namespace

std::vector<const CLI::App*> shownCommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command, bool positional) {
  return command.get_options(
      [=](const CLI::Option* option) { return option->get_positional() == positional; });
}

std::vector<std::string> choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();  // "TEXT:{nv12,nv21}"
  const std::size_t open = type.find('{');
  if (open == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(open + 1, type.find('}') - open - 1), ',');
}

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

std::string completionScript(const CLI::App& app, const std::string& shell) {
  std::string options =
      fmt::format("    '') choices='{}' flags='{}' ;;\n", fmt::join(commandNames(app), " "),
                  fmt::join(optionNames(app, false), " "));
  std::string values;
  for (const CLI::App* command : shownCommands(app)) {
    options += fmt::format("    {}) flags='{}' valued='{}' ;;\n", command->get_name(),
                           fmt::join(optionNames(*command, false), " "),
                           fmt::join(optionNames(*command, true), " "));
    values += valueLines(*command);
  }
  return fmt::format(kScript, shell, shell == "zsh" ? kZshStart : "", options, values);
}

}  // namespace alg::tool
