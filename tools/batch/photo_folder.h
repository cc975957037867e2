// The photos in a folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace alg::tool {

struct PhotoFolder {
  std::vector<std::filesystem::path> photos;  ///< sorted
  std::size_t otherFiles = 0;                 ///< by their endings no photos
  std::size_t noFiles = 0;                    ///< named as photos, but links to nothing, pipes ...
  std::vector<std::string> problems;  ///< sub-folders that can't be read, in a sentence each
};

/// Searches a folder and, if `recursive`, its sub-folders, except `output`; hidden files and
/// folders count for nothing. Throws UserError when the folder itself can't be read.
PhotoFolder photosIn(const std::filesystem::path& folder, const std::filesystem::path& output,
                     bool recursive);

}  // namespace alg::tool
