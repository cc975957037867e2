#include "tools/effect_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string>
#include <vector>

#include "tools/console.h"

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

std::string pictures(const EffectTableEntry& effect) {
  if (effect.portraitPicture == nullptr) {
    return "-";
  }
  std::string portrait = effect.portraitPicture;
  if (effect.landscapePicture == nullptr || portrait == effect.landscapePicture) {
    return portrait;
  }
  return fmt::format("{} / {}", portrait, effect.landscapePicture);
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

/// What `apply` does with a name of the effect table.
std::string_view runs(const EffectTableEntry& effect) {
  if (effect.changesFrame()) {
    return "the road";
  }
  const ClassicEffect* classic = findClassic(effect.name);
  return classic != nullptr ? classic->name : "nothing";
}

}  // namespace

const ClassicEffect* findClassic(std::string_view name) {
  const auto effects = classicEffects();
  const auto found = std::ranges::find_if(effects, [&](const ClassicEffect& effect) {
    return effect.name == name || (!name.empty() && effect.roadName == name);
  });
  return found != effects.end() ? &*found : nullptr;
}

NamedEffect findEffect(std::string_view name) {
  const auto table = effectTable();
  const auto road = std::ranges::find(table, name, &EffectTableEntry::name);
  if (road != table.end() && road->changesFrame()) {
    return {.road = &*road};
  }
  if (const ClassicEffect* classic = findClassic(name)) {
    return {.classic = classic};
  }
  if (road != table.end()) {
    return {.road = &*road};
  }
  failUnknown(name);
}

std::vector<std::string_view> effectNames() {
  std::vector<std::string_view> names;
  for (const EffectTableEntry& effect : effectTable()) {
    names.emplace_back(effect.name);
  }
  for (const ClassicEffect& effect : classicEffects()) {
    names.push_back(effect.name);
  }
  return names;
}

void printEffects() {
  constexpr auto kRoadRow = "{:<18} {:>3} {:>7}  {:<14} {}\n";
  fmt::print(fmt::runtime(kRoadRow), "NAME", "ID", "STRIPS", "APPLY RUNS",
             "PICTURE (portrait / landscape)");
  for (const EffectTableEntry& effect : effectTable()) {
    fmt::print(fmt::runtime(kRoadRow), effect.name, effect.effectId, effect.stripCount,
               runs(effect), pictures(effect));
  }
  constexpr auto kClassicRow = "{:<18} {:<19} {}\n";
  fmt::print("\n");
  fmt::print(fmt::runtime(kClassicRow), "CLASSIC EFFECT", "OPTIONS", "SHOWS");
  for (const ClassicEffect& effect : classicEffects()) {
    const auto& [first, second] = effect.options;
    fmt::print(fmt::runtime(kClassicRow), effect.name,
               fmt::format("{} {}", first.name.empty() ? "-" : first.name, second.name),
               effect.about);
  }
}

}  // namespace alg::tool
