// The names of the effect table, for people.
#pragma once

#include <string_view>

#include "effect/effect_table.h"

namespace alg::tool {

/// The entry of a name (exact, case-sensitive). Throws UserError, with the nearest name when one is
/// near.
const EffectTableEntry& findEffect(std::string_view name);

/// Prints the whole table to stdout.
void printEffects();

}  // namespace alg::tool
