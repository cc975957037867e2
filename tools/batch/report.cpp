#include "tools/batch/report.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>

#include "tools/files/file_errors.h"
#include "tools/files/files.h"
#include "tools/files/new_file.h"
#include "tools/files/output_target.h"
#include "tools/shell/json.h"

namespace alg::tool {
namespace {

constexpr std::string_view kLineStart = "{\"in\":";

/// Whether a file is empty or begins as reports do.
bool isReport(int file) {
  char start[kLineStart.size()];
  const ssize_t size = pread(file, start, sizeof start, 0);
  return size == 0 || (size == sizeof start && std::string_view(start, sizeof start) == kLineStart);
}

int openReport(const std::filesystem::path& path) {
  const OutputTarget target = outputTarget(path);
  if (target.kind == OutputTarget::Kind::kDescriptor) {
    return dup(target.descriptor);
  }
  if (target.kind == OutputTarget::Kind::kStream) {
    return open(target.path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  }
  const int file = open(target.path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file >= 0 && (!isReport(file) || ftruncate(file, 0) != 0)) {
    close(file);
    throw WrongUse(
        fmt::format("--report {}: this file is no report, so it stays as it is; name another one",
                    path.string()));
  }
  return file;
}

}  // namespace

Report::Report(std::filesystem::path path) : path_(std::move(path)) {
  if (!path_.empty() && (file_ = openReport(path_)) < 0) {
    failFile("write", path_, errno);
  }
}

Report::~Report() {
  if (file_ >= 0) {
    close(file_);
  }
}

void Report::add(const ReportLine& line) {
  if (file_ < 0) {
    return;
  }
  std::vector<std::string> notes;
  std::ranges::transform(line.notes, std::back_inserter(notes), jsonString);
  const std::string text =
      fmt::format("{}{},\"out\":{},\"status\":\"{}\",\"code\":{},\"ms\":{},\"notes\":[{}]}}\n",
                  kLineStart, jsonString(line.in), jsonString(line.out), line.status,
                  static_cast<int>(line.code), std::llround(line.ms), fmt::join(notes, ","));
  const std::lock_guard lock(mutex_);
  if (!writeAll(file_, {reinterpret_cast<const uint8_t*>(text.data()), text.size()})) {
    failFile("write", path_, errno);
  }
}

}  // namespace alg::tool
