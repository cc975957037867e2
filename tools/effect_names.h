// The names of the effects, for people: those of the effect road, and of the classic effects.
#pragma once

#include <string_view>
#include <vector>

#include "effect/effect_table.h"
#include "tools/classic_effects.h"

namespace alg::tool {

/// What a name stands for: exactly one is set.
struct NamedEffect {
  const EffectTableEntry* road = nullptr;
  const ClassicEffect* classic = nullptr;
};

/// A name (exact, case-sensitive) of the effect table stands for the road when the road changes the
/// frame; otherwise for the classic effect of that or the road's name; otherwise it passes through.
/// Throws WrongUse, with the nearest name when one is near.
NamedEffect findEffect(std::string_view name);

/// The classic effect with a name, or with a name of the effect table; null when there is none.
const ClassicEffect* findClassic(std::string_view name);

/// All names that findEffect() knows. A name of both families comes twice.
std::vector<std::string_view> effectNames();

/// Prints both families to stdout.
void printEffects();

}  // namespace alg::tool
