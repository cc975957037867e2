#include "tools/batch/report.h"

#include <fcntl.h>
#include <fmt/format.h>
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

namespace alg::tool {
namespace {

constexpr std::string_view kLineStart = "{\"in\":";

/// The length of the UTF-8 character that a text begins with; 0 for none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t length = byte(0) < 0x80   ? 1
                             : byte(0) < 0xc2 ? 0
                             : byte(0) < 0xe0 ? 2
                             : byte(0) < 0xf0 ? 3
                             : byte(0) < 0xf5 ? 4
                                              : 0;
  if (length == 0 || length > text.size()) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) {
      return 0;
    }
  }
  const unsigned second = length > 2 ? byte(1) : 0x90;
  const bool wrong = (byte(0) == 0xe0 && second < 0xa0) || (byte(0) == 0xed && second > 0x9f) ||
                     (byte(0) == 0xf0 && second < 0x90) || (byte(0) == 0xf4 && second > 0x8f);
  return wrong ? 0 : length;  // longer than needed, a surrogate, or beyond U+10FFFF
}

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

std::string jsonString(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const auto code = static_cast<unsigned char>(text[0]);
    if (length == 0) {
      result += fmt::format("\\udc{:02x}", code);
    } else if (code < 0x20 || code == '"' || code == '\\' || code == 0x7f) {
      result += fmt::format("\\u{:04x}", code);
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(1, length));
  }
  return result + '"';
}

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
