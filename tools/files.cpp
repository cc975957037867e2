#include "tools/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tools/failure.h"
#include "tools/file_errors.h"
#include "tools/interrupts.h"
#include "tools/new_file.h"
#include "tools/output_target.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Asked for before there are threads, because asking sets it.
const mode_t fileMask = [] {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}();

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

std::optional<struct stat> statusOf(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/// Access rights and owner of what the file replaces, or else the rights of what it is made from.
void setAccess(int file, const std::optional<struct stat>& replaced,
               const std::optional<struct stat>& source) {
  constexpr mode_t kRights = 0777;
  if (replaced) {
    if (replaced->st_uid != geteuid() || replaced->st_gid != getegid()) {
      std::ignore = fchown(file, replaced->st_uid, replaced->st_gid);  // allowed to root only
    }
    fchmod(file, replaced->st_mode & kRights);
  } else {
    const mode_t rights = source && S_ISREG(source->st_mode) ? source->st_mode & kRights : 0666U;
    fchmod(file, rights & ~fileMask);
  }
}

void writeStream(const OutputTarget& target, const fs::path& path, std::span<const uint8_t> bytes) {
  if (target.kind == OutputTarget::Kind::kDescriptor) {
    if (path == kStandardStream && isatty(target.descriptor) == 1) {
      throw WrongUse("a photo on a terminal is no use; redirect the standard output");
    }
    std::fflush(stdout);
    if (!writeAll(target.descriptor, bytes)) {
      failFile("write", path, errno);
    }
    return;
  }
  const int file = open(target.path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (file < 0) {
    failFile("write", path, errno);
  }
  const bool written = writeAll(file, bytes);
  const int error = errno;
  if (close(file) != 0 || !written) {
    failFile("write", path, written ? errno : error);
  }
}

}  // namespace

std::vector<uint8_t> readFile(const fs::path& path) {
  const bool standard = path == kStandardStream;
  const File opened(standard ? nullptr : std::fopen(path.c_str(), "rbe"));
  std::FILE* const file = standard ? stdin : opened.get();
  if (file == nullptr) {
    failFile("read", path, errno);
  }
  struct stat status {};
  const bool regular = fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
  const std::size_t expected = regular ? static_cast<std::size_t>(status.st_size) : 0;
  std::vector<uint8_t> bytes;
  std::size_t size = 0;
  do {  // one byte more than expected shows that the file has ended
    constexpr std::size_t kFirstPiece = 1U << 20U;
    if (std::max(size, expected) > kMostFileBytes) {
      throw BadInput(fmt::format("{}: longer than any photo, at most {} bytes are read",
                                 path.string(), kMostFileBytes));
    }
    bytes.resize(std::max(regular ? expected + 1 : kFirstPiece, 2 * size));
    size += std::fread(bytes.data() + size, 1, bytes.size() - size, file);
  } while (size == bytes.size());
  if (std::ferror(file) != 0) {
    failFile("read", path, errno);
  }
  bytes.resize(size);
  return bytes;
}

void writeFile(const fs::path& path, std::span<const uint8_t> bytes, const WriteOptions& options) {
  const OutputTarget target = outputTarget(path);
  if (target.kind != OutputTarget::Kind::kFile) {
    writeStream(target, path, bytes);
    return;
  }
  if (target.exists && !options.replace) {
    failFile("write", path, EEXIST);
  }
  if (target.exists && access(target.path.c_str(), W_OK) != 0) {
    failFile("write", path, errno);
  }
  const auto replaced = target.exists ? statusOf(target.path) : std::nullopt;
  const auto source = options.source.empty() ? std::nullopt : statusOf(options.source);
  NewFile file(folderOf(target.path));
  if (file.descriptor() < 0 || !writeAll(file.descriptor(), bytes)) {
    failFile("write", path, errno);
  }
  setAccess(file.descriptor(), replaced, source);
  if (options.keepTimes && source) {
    const timespec times[] = {source->st_atim, source->st_mtim};
    futimens(file.descriptor(), times);
  }
  // A file that is replaced may be the only copy.
  if ((options.durable || target.exists) && fdatasync(file.descriptor()) != 0 && errno != EINVAL) {
    failFile("write", path, errno);
  }
  throwIfInterrupted();
  if (!file.moveTo(target.path, options.replace)) {
    failFile("write", path, errno);
  }
}

void createFolders(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder)) {
    failFile("create the folder", folder, error ? error.value() : EEXIST);
  }
}

TemporaryFolder::TemporaryFolder(fs::path target) : target_(std::move(target)) {
  path_ = temporaryName(folderOf(target_));
  std::error_code error;
  if (!fs::create_directory(path_, error)) {
    failFile("create", target_, error ? error.value() : EEXIST);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void TemporaryFolder::moveToTarget() {
  throwIfInterrupted();
  const fs::path old = temporaryName(folderOf(target_));
  std::error_code error;
  const bool replacing = fs::exists(target_);
  if (replacing) {
    fs::rename(target_, old, error);
  }
  if (!error) {
    fs::rename(path_, target_, error);
    if (error && replacing) {
      std::error_code ignored;
      fs::rename(old, target_, ignored);
    }
  }
  if (error) {
    failFile("create", target_, error.value());
  }
  fs::remove_all(old, error);
}

}  // namespace alg::tool
