#include "tools/effects/effect_options.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "tools/effects/photo_effect.h"
#include "tools/shell/console.h"
#include "tools/shell/file_kinds.h"

namespace alg::tool {
namespace {

constexpr char kGroup[] = "Options of single effects";

/// An option that one effect has, or several have.
struct EffectOption {
  std::string name;           ///< without dashes
  const char* typeName = "";  ///< of its value
  bool isPicture = false;
  std::vector<std::pair<std::string, std::string>> help;  ///< text, and the effects that it is for
};

void add(std::vector<EffectOption>& options, const char* name, const char* typeName, bool isPicture,
         const Operation& effect, const std::string& text) {
  auto option = std::ranges::find(options, name, &EffectOption::name);
  if (option == options.end()) {
    option = options.insert(option, {name, typeName, isPicture, {}});
  }
  const auto same =
      std::ranges::find(option->help, text, &std::pair<std::string, std::string>::first);
  if (same != option->help.end()) {
    same->second += fmt::format(", {}", effect.name);
  } else {
    option->help.emplace_back(text, effect.name);
  }
}

bool isWhole(const Parameter& parameter) { return parameter.type == Parameter::Type::kInteger; }

/// "0.3 to 2 half diagonals"
std::string rangeOf(const Parameter& parameter) {
  return fmt::format("{} to {} {}", parameter.least, parameter.most, parameter.unit);
}

std::vector<EffectOption> effectOptions() {
  std::vector<EffectOption> options;
  for (const Operation* effect : effects()) {
    for (const Parameter& parameter : effect->parameters) {
      add(options, parameter.name, isWhole(parameter) ? "N" : "F", false, *effect,
          fmt::format("{} ({}; {} when not given)", parameter.help, rangeOf(parameter),
                      parameter.preset));
    }
    for (const PictureRole& role : effect->pictures) {
      if (role.read) {
        add(options, role.name, kPngFile.typeName, true, *effect,
            fmt::format("{}, in place of a sample", role.help));
      }
    }
  }
  return options;
}

bool isAllowed(const Parameter& parameter, double value) {
  const double step = parameter.step == 0 && isWhole(parameter) ? 1 : parameter.step;
  return value >= parameter.least && value <= parameter.most &&
         (step == 0 || std::fmod(value - parameter.least, step) == 0);
}

/// Options whose files have to suit each other.
std::vector<std::pair<std::string, std::string>> picturesThatGoTogether() {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const Operation* effect : effects()) {
    for (const PictureRole& role : effect->pictures) {
      if (role.size == PictureRole::Size::kCoversTheFirst) {
        pairs.emplace_back(fmt::format("--{}", effect->pictures[0].name),
                           fmt::format("--{}", role.name));
      }
    }
  }
  return pairs;
}

[[noreturn]] void failForeign(const std::string& option,
                              const std::vector<const Operation*>& chosen) {
  std::vector<std::string_view> owners;
  for (const Operation* other : effects()) {
    if (std::ranges::count(optionNames(*other), option) > 0) {
      owners.emplace_back(other->name);
    }
  }
  std::vector<std::string_view> names;
  std::ranges::transform(chosen, std::back_inserter(names), &Operation::name);
  throw WrongUse(fmt::format("{} is an option of {}, not of {}", option, fmt::join(owners, ", "),
                             fmt::join(names, ", ")));
}

}  // namespace

void addEffectOptions(CLI::App& command, EffectChoices& choices) {
  for (const EffectOption& option : effectOptions()) {
    const std::string flag = "--" + option.name;
    CLI::Option* const added =
        option.isPicture
            ? command.add_option_function<std::string>(
                  flag, [&choices, name = option.name](
                            const std::string& file) { choices.pictures[name] = file; })
            : command.add_option_function<double>(
                  flag,
                  [&choices, name = option.name](double value) { choices.values[name] = value; });
    std::string about;
    for (const auto& [text, effects] : option.help) {
      about += fmt::format("{}{}: {}", about.empty() ? "" : "; ", effects, text);
    }
    added->description(about)->type_name(option.typeName)->group(kGroup);
  }
  // A sample hardly suits a user's picture.
  for (const auto& [front, mask] : picturesThatGoTogether()) {
    command.get_option(front)->needs(command.get_option(mask));
    command.get_option(mask)->needs(command.get_option(front));
  }
}

std::vector<std::string> optionNames(const Operation& effect) {
  std::vector<std::string> names;
  for (const Parameter& parameter : effect.parameters) {
    names.push_back(fmt::format("--{}", parameter.name));
  }
  for (const PictureRole& role : effect.pictures) {
    if (role.read) {
      names.push_back(fmt::format("--{}", role.name));
    }
  }
  return names;
}

void checkOwners(const EffectChoices& choices, const std::vector<const Operation*>& effects) {
  const auto check = [&](const std::string& name) {
    const std::string option = "--" + name;
    if (std::ranges::none_of(effects, [&](const Operation* effect) {
          return std::ranges::count(optionNames(*effect), option) > 0;
        })) {
      failForeign(option, effects);
    }
  };
  for (const auto& [name, file] : choices.pictures) {
    check(name);
  }
  for (const auto& [name, value] : choices.values) {
    check(name);
  }
}

Call callWith(const EffectChoices& choices, const Operation& effect) {
  Call call = presetCall(effect);
  std::size_t i = 0;
  for (const Parameter& parameter : effect.parameters) {
    if (const auto chosen = choices.values.find(parameter.name); chosen != choices.values.end()) {
      if (!isAllowed(parameter, chosen->second)) {
        throw WrongUse(fmt::format("--{} {}: {} takes {}{}", chosen->first, chosen->second,
                                   effect.name, isWhole(parameter) ? "whole numbers, " : "",
                                   rangeOf(parameter)));
      }
      call.values[i] = chosen->second;
    }
    ++i;
  }
  return call;
}

}  // namespace alg::tool
