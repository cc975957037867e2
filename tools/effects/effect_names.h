// The names of the effects, for people: their own, and those that the pipeline knows.
#pragma once

#include <string_view>
#include <vector>

#include "catalogue/operation.h"

namespace alg::tool {

/// The effect of a name (exact, case-sensitive), be it its own or the pipeline's. A name of the
/// pipeline's under which frames pass through may stand for another operation. Throws WrongUse,
/// with the nearest name when one is near.
const Operation& findEffect(std::string_view name);

/// All names that findEffect() knows: the pipeline's, then the effects' own. One that is both comes
/// twice.
std::vector<std::string_view> effectNames();

/// Prints a table of the pipeline's names and one of the effects.
void printEffects();

}  // namespace alg::tool
