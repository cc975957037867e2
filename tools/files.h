// Reading and writing whole files and folders so that nothing half-written is ever left behind.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace alg::tool {

/// Thrown by throwIfInterrupted(); not an error, so not derived from one.
struct Interrupted {
  int signal;
};

/// From now on SIGINT, SIGTERM and SIGHUP are only noted, so that temporary files can be removed on
/// the way out. A second signal of the same kind ends the process at once.
void deferInterrupts();
/// Throws Interrupted when a signal has come. Call it between steps of long work.
void throwIfInterrupted();

/// The bytes of a file. Throws UserError.
std::vector<uint8_t> readFile(const std::filesystem::path& path);

/// Writes a whole file: to a temporary one in the same folder first, which then takes the target's
/// place, so the target is either the old file or the complete new one. Follows a symbolic link;
/// refuses devices, pipes and write-protected files. Throws UserError.
void writeFile(const std::filesystem::path& path, std::span<const uint8_t> bytes);

/// A folder under construction beside its target.
class TemporaryFolder {
 public:
  /// Throws UserError when it can't be made.
  explicit TemporaryFolder(std::filesystem::path target);
  /// Removes the folder and what is in it, unless it was moved to its target.
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// Puts the folder in the target's place; what was there is removed, or put back on failure.
  void moveToTarget();

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;
};

}  // namespace alg::tool
