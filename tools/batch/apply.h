// camera-effects apply: effects on one photo or on many.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/effects/effect_options.h"
#include "tools/photos/photo_options.h"
#include "tools/shell/console.h"

namespace alg::tool {

inline constexpr int kMostThreads = 256;

struct ApplyRequest {
  std::string effects;   ///< one, or several with commas between them
  double mix = 100;      ///< percent of the result that is kept
  bool asFrame = false;  ///< the pipeline's effects work on a camera frame made of the photo
  /// Inputs, then the output. One file as input: the output is a file, or a folder that exists.
  /// Several, a folder (its photos) or a list: a folder, made when missing. With `names`, inputs
  /// alone. "-" is the standard input or output.
  std::vector<std::filesystem::path> paths;
  std::filesystem::path list;    ///< a file with names of inputs, or "-"
  bool nulSeparated = false;     ///< those names
  std::string names;             ///< a template for the outputs' names
  std::string shard;             ///< "I/N"
  std::filesystem::path report;  ///< a file for a line of JSON a photo, or "-"
  PhotoOptions options;
  EffectChoices choices;
  int threads = 0;         ///< 0: one for each processor that the process may use
  uint64_t memory = 0;     ///< bytes for all photos at once; 0: half of what is left
  bool recursive = false;  ///< photos of sub-folders, too, into the same sub-folders of the output
  bool skipExisting = false;
  bool noClobber = false;
  bool keepTimes = false;
  bool dryRun = false;
  Verbosity verbosity = Verbosity::kNormal;
};

/// Reports photos that fail and goes on with the others. Returns whether all succeeded; what a
/// single photo fails with is thrown. Throws UserError when there is nothing to start with,
/// WrongUse when the request contradicts itself.
bool applyToFiles(const ApplyRequest& request);

}  // namespace alg::tool
