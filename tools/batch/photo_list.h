// Which photos a batch takes, and where each one goes.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/batch/output_name.h"
#include "tools/batch/shard.h"
#include "tools/shell/failure.h"

namespace alg::tool {

struct PhotoJob {
  std::string input;
  std::string output{};
  std::string problem{};  ///< why it can't be done; empty when it can be tried
  ExitCode code = ExitCode::kDone;
  bool makesFolder = false;  ///< the folder of the output may have to be made
  bool inPlace = false;      ///< the output may be the input
  bool isFile = false;  ///< the input must be a file: a list was hardly made to wait for a pipe
};

struct PhotoSources {
  std::vector<std::filesystem::path> inputs;  ///< files, folders or "-"
  std::filesystem::path list;                 ///< a file with more of them, "-", or empty
  bool nulSeparated = false;                  ///< the names in it, else by newlines
  bool recursive = false;                     ///< sub-folders of folders, too
  std::filesystem::path folder{};  ///< where outputs go, under the input's name or below a folder
                                   ///< under its path there
  std::optional<OutputName> names{};  ///< instead of the folder
  Shard shard{};
};

/// The jobs in the order of the inputs; folders sorted by name. Notes tell what folders hold beside
/// photos, and what was left out as the output of another input. Inputs that can't be read or whose
/// outputs collide are jobs with a problem. Throws UserError when the list can't be read.
std::vector<PhotoJob> photoJobs(const PhotoSources& sources);

}  // namespace alg::tool
