// Where the bytes go that are written under a name.
#pragma once

#include <filesystem>

namespace alg::tool {

struct OutputTarget {
  enum class Kind {
    kDescriptor,  ///< one that this process has open
    kStream,      ///< a pipe, a device: opened, written to, closed
    kFile         ///< a regular file, or none yet
  };
  Kind kind = Kind::kFile;
  int descriptor = -1;
  std::filesystem::path path{};  ///< without links in its last part
  bool exists = false;
};

/// Follows the links of a name, also those to nothing; "-" is the standard output, and the names
/// below /dev/fd and /proc/self/fd are the descriptors themselves, so that a redirected /dev/stdout
/// neither loses what was written before nor is replaced. Throws UserError for a folder, and for
/// links that go round in a circle.
OutputTarget outputTarget(const std::filesystem::path& path);

}  // namespace alg::tool
