// The names of the effect table, for people.
#pragma once

#include <string_view>

#include "effect/effect_table.h"

namespace alg::tool {

/// The entry of a name (exact, case-sensitive). Throws UserError, with the nearest name when one is
/// near.
const EffectTableEntry& findEffect(std::string_view name);

/// Whether the road has a filter for this name. The other names leave the frame as it is, up to
/// conversion rounding.
bool changesFrame(const EffectTableEntry& effect);

/// Prints the whole table to stdout.
void printEffects();

}  // namespace alg::tool
