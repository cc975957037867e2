#include "tools/console.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <string>

namespace alg::tool {
namespace {

// A line that is to stay must not be glued to the progress line.
bool progressLineOpen = false;

void clearProgressLine() {
  if (progressLineOpen) {
    std::fputs("\r\x1b[K", stderr);
    progressLineOpen = false;
  }
}

std::string printable(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code == 0x7f) {
      c = '?';
    }
  }
  return result;
}

std::size_t terminalColumns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

/// The longest beginning of at most `bytes` bytes that doesn't cut a UTF-8 character.
std::string_view shortened(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) {
    return text;
  }
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xc0) == 0x80) {
    --bytes;
  }
  return text.substr(0, bytes);
}

}  // namespace

void complain(std::string_view text) {
  static std::set<std::string, std::less<>> told;
  if (told.emplace(text).second) {
    clearProgressLine();
    fmt::print(stderr, "camera-effects: {}\n", printable(text));
  }
}

void note(std::string_view text) { complain(fmt::format("note: {}", text)); }

Progress::Progress(std::size_t total)
    : total_(total), shown_(total > 1 && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() { clearProgressLine(); }

void Progress::next(std::string_view name) {
  ++current_;
  if (!shown_) {
    return;
  }
  const std::string line = fmt::format("{}/{} {}", current_, total_, printable(name));
  fmt::print(stderr, "\r{}\x1b[K", shortened(line, terminalColumns() - 1));
  std::fflush(stderr);
  progressLineOpen = true;
}

}  // namespace alg::tool
