// Reading and writing whole files and folders so that nothing half-written is ever left behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace alg::tool {

/// As an input it stands for the standard input, as an output for the standard output.
inline constexpr std::string_view kStandardStream = "-";

/// The largest file that is read: no photo or frame is larger.
inline constexpr std::size_t kMostFileBytes = std::size_t{1} << 31U;

/// The bytes of a file, of a stream up to its end, or of the standard input. Throws UserError.
std::vector<uint8_t> readFile(const std::filesystem::path& path);

struct WriteOptions {
  /// What the file is made from: a new file gets no wider access rights than this one has. Empty or
  /// a stream for none.
  std::filesystem::path source{};
  bool keepTimes = false;  ///< those of the source
  bool replace = true;     ///< else an existing file is an error, even one that comes meanwhile
  bool durable = false;    ///< on the disk before it takes its name, to survive a power cut
};

/// A file that is written in pieces. What is no file gets them all at the end.
class OutputFile {
 public:
  /// Throws UserError when nothing can be written under that name.
  OutputFile(const std::filesystem::path& path, WriteOptions options);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Throws UserError.
  void write(std::span<const uint8_t> bytes);
  /// Writes the last bytes; the file is then complete and takes its name. Throws UserError.
  void finish(std::span<const uint8_t> bytes = {});

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

/// Writes a whole file: to a nameless or hidden one in the same folder first, which then takes the
/// target's place, so the target is either the old file or the complete new one. Follows symbolic
/// links, those to nothing too; a file that it replaces passes on its access rights and owner.
/// What is no file (pipe, device, the standard output, a descriptor of this process by its name in
/// /dev/fd) is written to as a stream. Refuses write-protected files. Throws UserError.
void writeFile(const std::filesystem::path& path, std::span<const uint8_t> bytes,
               const WriteOptions& options = {});

/// Creates a folder, and those that it is in. Throws UserError.
void createFolders(const std::filesystem::path& folder);

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
