#include "tools/effects/effect_names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>
#include <string>
#include <vector>

#include "catalogue/operations.h"
#include "tools/effects/effect_options.h"
#include "tools/effects/photo_effect.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

std::string lowerCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

/// The fewest insertions, removals and replacements that turn a into b.
std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char wrong : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (wrong == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

/// How far a wrong name is from a right one; part of a name ("sweet") counts as near.
std::size_t distance(std::string_view wrong, std::string_view right) {
  const std::string a = lowerCase(wrong);
  const std::string b = lowerCase(right);
  constexpr std::size_t kTellingPart = 4;
  const bool partOf = a.size() >= kTellingPart && b.find(a) != std::string::npos;
  return partOf ? 1 : editDistance(a, b);
}

/// The operations that the pipeline has a name for, by their identifiers.
std::vector<const Operation*> pipelineOperations() {
  std::vector<const Operation*> known;
  std::ranges::copy_if(operations(), std::back_inserter(known),
                       [](const Operation* row) { return row->pipeline.name != nullptr; });
  std::ranges::sort(known, {}, [](const Operation* row) { return row->pipeline.identifier; });
  return known;
}

/// The files that the pipeline loads for an operation.
std::string filesOf(const Operation& operation) {
  if (!operation.pipeline.loadsPicture) {
    return "-";
  }
  const PictureRole& role = operation.pictures[0];
  return role.landscapeFile == nullptr ? role.file
                                       : fmt::format("{} / {}", role.file, role.landscapeFile);
}

[[noreturn]] void failUnknown(std::string_view name) {
  const std::vector<std::string_view> names = effectNames();
  const std::string_view nearest =
      *std::ranges::min_element(names, {}, [&](auto right) { return distance(name, right); });
  const bool near = distance(name, nearest) <= 1 + name.size() / 4;
  const std::string advice = near ? fmt::format("did you mean \"{}\"?", nearest)
                                  : "\"camera-effects list\" shows the names";
  throw WrongUse(fmt::format("unknown effect \"{}\"; {}", name, advice));
}

/// What `apply` runs for a name of the pipeline.
std::string_view runs(const Operation& operation) {
  return isEffect(operation) ? operation.name : "nothing";
}

}  // namespace

const Operation& findEffect(std::string_view name) {
  for (const Operation* effect : effects()) {
    if (effect->name == name) {
      return *effect;
    }
  }
  for (const Operation* operation : pipelineOperations()) {
    if (operation->pipeline.name == name) {
      return *operation;
    }
  }
  failUnknown(name);
}

std::vector<std::string_view> effectNames() {
  std::vector<std::string_view> names;
  for (const Operation* operation : pipelineOperations()) {
    names.emplace_back(operation->pipeline.name);
  }
  for (const Operation* effect : effects()) {
    names.emplace_back(effect->name);
  }
  return names;
}

void printEffects() {
  constexpr auto kPipelineRow = "{:<18} {:>3} {:>7}  {:<14} {}\n";
  fmt::print(fmt::runtime(kPipelineRow), "PIPELINE NAME", "ID", "STRIPS", "APPLY RUNS",
             "PICTURE (portrait / landscape)");
  for (const Operation* operation : pipelineOperations()) {
    fmt::print(fmt::runtime(kPipelineRow), operation->pipeline.name, operation->pipeline.identifier,
               operation->pipeline.strips, runs(*operation), filesOf(*operation));
  }
  constexpr auto kEffectRow = "{:<18} {:<19} {}\n";
  fmt::print("\n");
  fmt::print(fmt::runtime(kEffectRow), "EFFECT", "OPTIONS", "SHOWS");
  for (const Operation* effect : effects()) {
    const std::string options = fmt::format("{}", fmt::join(optionNames(*effect), " "));
    fmt::print(fmt::runtime(kEffectRow), effect->name, options.empty() ? "-" : options,
               effect->shows);
  }
}

}  // namespace alg::tool
