#include "tools/files.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "tools/console.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

std::atomic<int> pendingSignal = 0;  // set by the handler, read by all threads
static_assert(std::atomic<int>::is_always_lock_free);

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void fail(std::string_view action, const fs::path& path, int error) {
  throwIfInterrupted();  // the reason why a blocking call came back
  throw UserError(fmt::format("cannot {} {}: {}", action, path.string(), std::strerror(error)));
}

/// A hidden name in `folder` that no file has had in this run.
fs::path temporaryName(const fs::path& folder) {
  static std::atomic<int> count = 0;
  return folder / fmt::format(".camera-effects-{}-{}", getpid(), count++);
}

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// Where the bytes really go: links resolved, and nothing replaced that is more than a file.
fs::path replaceableFile(const fs::path& path) {
  std::error_code error;
  fs::path target = fs::canonical(path, error);
  if (error) {
    return path;  // new, or a link to nothing
  }
  if (!fs::is_regular_file(target)) {
    throw UserError(fmt::format("cannot write {}: not a regular file", path.string()));
  }
  if (access(target.c_str(), W_OK) != 0) {
    fail("write", path, errno);
  }
  return target;
}

/// Removes the file when it goes out of scope; after a rename there is nothing to remove.
struct RemoveFile {
  fs::path path;
  ~RemoveFile() { std::remove(path.c_str()); }
};

}  // namespace

void deferInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int signal) { pendingSignal = signal; };
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // no SA_RESTART: a blocked read comes back
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal, &action, nullptr);
    }
  }
}

void throwIfInterrupted() {
  if (const int signal = pendingSignal; signal != 0) {
    throw Interrupted{signal};
  }
}

std::vector<uint8_t> readFile(const fs::path& path) {
  const File file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    fail("read", path, errno);
  }
  std::error_code noSize;  // of a pipe
  const std::uintmax_t expected = fs::file_size(path, noSize);
  constexpr std::size_t kLargestGuess = 1U << 30U;
  std::vector<uint8_t> bytes;
  std::size_t size = 0;
  do {  // one byte more than expected shows that the file has ended
    constexpr std::size_t kFirstPiece = 1U << 20U;
    const auto guess = noSize ? kFirstPiece : std::min<std::size_t>(expected, kLargestGuess) + 1;
    bytes.resize(std::max(guess, 2 * size));
    size += std::fread(bytes.data() + size, 1, bytes.size() - size, file.get());
  } while (size == bytes.size());
  if (std::ferror(file.get()) != 0) {
    fail("read", path, errno);
  }
  bytes.resize(size);
  return bytes;
}

void writeFile(const fs::path& path, std::span<const uint8_t> bytes) {
  const fs::path target = replaceableFile(path);
  const RemoveFile temporary{temporaryName(folderOf(target))};
  File file(std::fopen(temporary.path.c_str(), "wbx"));
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
      std::fclose(file.release()) != 0) {
    fail("write", path, errno);
  }
  throwIfInterrupted();
  if (std::rename(temporary.path.c_str(), target.c_str()) != 0) {
    fail("write", path, errno);
  }
}

TemporaryFolder::TemporaryFolder(fs::path target) : target_(std::move(target)) {
  path_ = temporaryName(folderOf(target_));
  std::error_code error;
  if (!fs::create_directory(path_, error)) {
    fail("create", target_, error ? error.value() : EEXIST);
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
    fail("create", target_, error.value());
  }
  fs::remove_all(old, error);
}

}  // namespace alg::tool
