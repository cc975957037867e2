#include "tools/files/new_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <utility>

#include "tools/shell/interrupts.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// The link by which a file without a name can be given one.
std::string linkOf(int file) { return fmt::format("/proc/self/fd/{}", file); }

}  // namespace

NewFile::NewFile(const fs::path& folder)
    : folder_(folder), file_(open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600)) {
  if (file_ >= 0 && access(linkOf(file_).c_str(), F_OK) != 0) {  // no /proc
    close(std::exchange(file_, -1));
  }
  if (file_ < 0) {
    hidden_ = temporaryName(folder);
    file_ = open(hidden_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (file_ < 0) {
      hidden_.clear();
    }
  }
}

NewFile::~NewFile() {
  const int error = errno;  // of what has failed
  if (file_ >= 0) {
    close(file_);
  }
  if (!hidden_.empty()) {
    std::remove(hidden_.c_str());
  }
  errno = error;
}

bool NewFile::giveName(const fs::path& name) const {
  return linkat(AT_FDCWD, linkOf(file_).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool NewFile::moveTo(const fs::path& target, bool replace) {
  if (hidden_.empty()) {
    if (giveName(target)) {
      return close(std::exchange(file_, -1)) == 0;
    }
    if (errno != EEXIST || !replace) {
      return false;
    }
    const fs::path name = temporaryName(folder_);
    if (!giveName(name)) {
      return false;
    }
    hidden_ = name;
  }
  if (close(std::exchange(file_, -1)) != 0) {  // which is where network file systems report errors
    return false;
  }
  const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
  if (renameat2(AT_FDCWD, hidden_.c_str(), AT_FDCWD, target.c_str(), flags) == 0) {
    hidden_.clear();
    return true;
  }
  // Some file systems know no such rename. The destructor removes the other name.
  return !replace && errno == EINVAL && link(hidden_.c_str(), target.c_str()) == 0;
}

fs::path temporaryName(const fs::path& folder) {
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) {
    number = std::random_device()();
  }
  return folder / fmt::format(".camera-effects-{:016x}", number);
}

bool writeAll(int file, std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno != EINTR) {
        return false;
      }
      throwIfInterrupted();
      continue;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace alg::tool
