// The options of effects on the command line, as the catalogue describes them: --radius for a
// parameter "radius", --paper for a picture "paper".
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "tools/effects/effect_pictures.h"

namespace alg::tool {

/// What the user chose for an effect.
struct EffectChoices {
  std::map<std::string, double> values;  ///< by the parameters' names
  PictureFiles pictures;
};

/// Adds the options of all effects. Parsing fills the choices, which must outlive it.
void addEffectOptions(CLI::App& command, EffectChoices& choices);

/// The names of an effect's options: "--offset".
std::vector<std::string> optionNames(const Operation& effect);

/// Throws WrongUse for choices that none of the effects has.
void checkOwners(const EffectChoices& choices, const std::vector<const Operation*>& effects);

/// A call with those of the chosen values that the effect has. Throws WrongUse for values out of
/// its ranges.
Call callWith(const EffectChoices& choices, const Operation& effect);

}  // namespace alg::tool
