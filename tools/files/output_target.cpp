#include "tools/files/output_target.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <string>
#include <system_error>

#include "tools/files/file_errors.h"
#include "tools/files/files.h"
#include "tools/shell/failure.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

constexpr int kMostLinks = 40;  // as the system's own limit

/// "/proc/PID/fd", whose links are not names but open files.
bool holdsDescriptors(const fs::path& folder) {
  return folder.filename() == "fd" && folder.native().starts_with("/proc/");
}

/// The number of a descriptor of this process.
std::optional<int> ownDescriptor(const fs::path& folder, const fs::path& name) {
  int number = -1;
  const std::string& text = name.native();
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool own = folder == fmt::format("/proc/{}/fd", getpid());
  return own && error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                         : std::nullopt;
}

}  // namespace

OutputTarget outputTarget(const fs::path& path) {
  using Kind = OutputTarget::Kind;
  if (path == kStandardStream) {
    return {.kind = Kind::kDescriptor, .descriptor = STDOUT_FILENO, .path = path, .exists = true};
  }
  fs::path at = path;
  std::error_code error;
  for (int links = 0; fs::is_symlink(fs::symlink_status(at, error)); ++links) {
    const fs::path folder =
        fs::canonical(at.has_parent_path() ? at.parent_path() : fs::path("."), error);
    if (error || links == kMostLinks) {
      failFile("write", path, error ? error.value() : ELOOP);
    }
    if (holdsDescriptors(folder)) {
      if (const auto number = ownDescriptor(folder, at.filename())) {
        return {.kind = Kind::kDescriptor, .descriptor = *number, .path = path, .exists = true};
      }
      return {.kind = Kind::kStream, .path = at, .exists = true};
    }
    at = folder / fs::read_symlink(at, error);
  }
  const fs::file_status status = fs::status(at, error);
  if (fs::is_directory(status)) {
    throw UserError(fmt::format("cannot write {}: it is a folder", path.string()));
  }
  const bool exists = fs::exists(status);
  return {.kind = exists && !fs::is_regular_file(status) ? Kind::kStream : Kind::kFile,
          .path = at,
          .exists = exists};
}

}  // namespace alg::tool
