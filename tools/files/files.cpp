#include "tools/files/files.h"

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

#include "tools/files/file_errors.h"
#include "tools/files/new_file.h"
#include "tools/files/output_target.h"
#include "tools/shell/failure.h"
#include "tools/shell/interrupts.h"

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

struct OutputFile::Parts {
  fs::path path;
  WriteOptions options;
  OutputTarget target;
  std::optional<struct stat> replaced{}, source{};
  std::optional<NewFile> file{};    ///< of a regular file
  std::vector<uint8_t> streamed{};  ///< else what is to be written
};

OutputFile::OutputFile(const fs::path& path, WriteOptions options)
    : parts_(new Parts{path, std::move(options), outputTarget(path)}) {
  Parts& parts = *parts_;
  const OutputTarget& target = parts.target;
  if (target.kind != OutputTarget::Kind::kFile) {
    return;
  }
  if (target.exists && !parts.options.replace) {
    failFile("write", parts.path, EEXIST);
  }
  if (target.exists && access(target.path.c_str(), W_OK) != 0) {
    failFile("write", parts.path, errno);
  }
  parts.replaced = target.exists ? statusOf(target.path) : std::nullopt;
  parts.source = parts.options.source.empty() ? std::nullopt : statusOf(parts.options.source);
  parts.file.emplace(folderOf(target.path));
  if (parts.file->descriptor() < 0) {
    failFile("write", parts.path, errno);
  }
}

OutputFile::~OutputFile() = default;

void OutputFile::write(std::span<const uint8_t> bytes) {
  if (!parts_->file) {
    parts_->streamed.insert(parts_->streamed.end(), bytes.begin(), bytes.end());
  } else if (!writeAll(parts_->file->descriptor(), bytes)) {
    failFile("write", parts_->path, errno);
  }
}

void OutputFile::finish(std::span<const uint8_t> bytes) {
  Parts& parts = *parts_;
  if (!parts.file) {
    if (!parts.streamed.empty()) {
      write(bytes);
      bytes = parts.streamed;
    }
    writeStream(parts.target, parts.path, bytes);
    return;
  }
  write(bytes);
  NewFile& file = *parts.file;
  setAccess(file.descriptor(), parts.replaced, parts.source);
  if (parts.options.keepTimes && parts.source) {
    const timespec times[] = {parts.source->st_atim, parts.source->st_mtim};
    futimens(file.descriptor(), times);
  }
  // A file that is replaced may be the only copy.
  if ((parts.options.durable || parts.target.exists) && fdatasync(file.descriptor()) != 0 &&
      errno != EINVAL) {
    failFile("write", parts.path, errno);
  }
  throwIfInterrupted();
  if (!file.moveTo(parts.target.path, parts.options.replace)) {
    failFile("write", parts.path, errno);
  }
}

void writeFile(const fs::path& path, std::span<const uint8_t> bytes, const WriteOptions& options) {
  OutputFile(path, options).finish(bytes);
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
