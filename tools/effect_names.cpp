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

}  // namespace

const EffectTableEntry& findEffect(std::string_view name) {
  const auto table = effectTable();
  const auto found = std::find_if(table.begin(), table.end(), [&](const EffectTableEntry& effect) {
    return effect.name == name;
  });
  if (found != table.end()) {
    return *found;
  }
  const auto nearest = std::min_element(table.begin(), table.end(),
                                        [&](const EffectTableEntry& a, const EffectTableEntry& b) {
                                          return distance(name, a.name) < distance(name, b.name);
                                        });
  const bool near = distance(name, nearest->name) <= 1 + name.size() / 4;
  const std::string advice = near ? fmt::format("did you mean \"{}\"?", nearest->name)
                                  : "\"camera-effects list\" shows the names";
  throw UserError(fmt::format("unknown effect \"{}\"; {}", name, advice));
}

void printEffects() {
  constexpr auto kRow = "{:<18} {:>3} {:>7}  {:<9} {}\n";
  fmt::print(fmt::runtime(kRow), "NAME", "ID", "STRIPS", "CHANGES",
             "PICTURE (portrait / landscape)");
  for (const EffectTableEntry& effect : effectTable()) {
    fmt::print(fmt::runtime(kRow), effect.name, effect.effectId, effect.stripCount,
               effect.changesFrame() ? "yes" : "no", pictures(effect));
  }
}

}  // namespace alg::tool
