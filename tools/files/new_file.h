// A file that has no name, or a hidden one, until it is complete.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

namespace alg::tool {

/// Where the file system can, the file has no name at all: a process that is killed leaves nothing.
class NewFile {
 public:
  /// In a folder, to be written to through descriptor(), which is -1 with errno when it can't be
  /// made. Nobody else may read it yet.
  explicit NewFile(const std::filesystem::path& folder);
  /// Removes it, unless it was moved to its place.
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int descriptor() const { return file_; }
  /// Closes the file and gives it its name, in the same folder. Returns false with errno, which is
  /// EEXIST when a file of that name must not be replaced.
  bool moveTo(const std::filesystem::path& target, bool replace);

 private:
  bool giveName(const std::filesystem::path& name) const;

  std::filesystem::path folder_;
  std::filesystem::path hidden_;  ///< empty while it has no name
  int file_;
};

/// A hidden name in `folder` that no other process chooses, on this machine or another.
std::filesystem::path temporaryName(const std::filesystem::path& folder);

/// Writes everything to a descriptor. Returns false with errno. Throws Interrupted when a signal
/// comes while it waits for room.
bool writeAll(int file, std::span<const uint8_t> bytes);

}  // namespace alg::tool
