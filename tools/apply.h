// camera-effects apply: one effect on one photo or on many.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tools/effect_options.h"
#include "tools/photo_options.h"

namespace alg::tool {

inline constexpr int kMostThreads = 64;

struct ApplyRequest {
  std::string effect;
  /// Inputs, then the output. One file as input: the output is a file, or a folder that exists.
  /// Several, or a folder (its *.jpg and *.jpeg): a folder, made when missing.
  std::vector<std::filesystem::path> paths;
  PhotoOptions options;
  EffectChoices choices;
  int threads = 0;         ///< 0: one for each processor
  bool recursive = false;  ///< photos of sub-folders, too, into the same sub-folders of the output
};

/// Reports photos that fail and goes on with the others. Returns whether all succeeded. Throws
/// UserError when there is nothing to start with, WrongUse when the request contradicts itself.
bool applyToFiles(const ApplyRequest& request);

}  // namespace alg::tool
