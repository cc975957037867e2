#include "tools/shell/console.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace alg::tool {
namespace {

constexpr std::size_t kNarrow = 60;  // columns, of which a bar would take too many

std::mutex consoleMutex;  // for stderr and what is known about it

// A line that is to stay must not be glued to the progress line.
bool progressLineOpen = false;

Verbosity shown = Verbosity::kNormal;  // set before there are threads

thread_local NoteCollector* collector = nullptr;

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

/// "[====>     ] " with so many characters inside.
std::string bar(std::size_t width, std::size_t done, std::size_t total) {
  const std::size_t filled = width * done / total;
  const std::string_view tip = filled < width ? ">" : "";
  return fmt::format("[{:=<{}}{:<{}}] ", "", filled, tip, width - filled);
}

/// "0:07", "12:34" or "1:02:03".
std::string duration(double seconds) {
  const auto whole = static_cast<int64_t>(std::ceil(seconds));
  const std::string minutes = fmt::format("{}:", whole / 60 % 60);
  return (whole < 3600 ? minutes : fmt::format("{}:{:0>3}", whole / 3600, minutes)) +
         fmt::format("{:02}", whole % 60);
}

/// With the lock held.
void printLine(std::string_view text) {
  clearProgressLine();
  // Not fmt::print(): it throws when stderr is full or closed, and nobody could be told.
  std::fputs(fmt::format("camera-effects: {}\n", printable(text)).c_str(), stderr);
}

}  // namespace

void complain(std::string_view text) {
  const std::lock_guard lock(consoleMutex);
  static std::set<std::string, std::less<>> told;
  if (told.emplace(text).second) {
    printLine(text);
  }
}

void note(std::string_view text) {
  if (collector != nullptr) {
    collector->notes_.emplace_back(text);
  }
  if (shown != Verbosity::kQuiet) {
    complain(fmt::format("note: {}", text));
  }
}

void say(std::string_view text) {
  if (shown == Verbosity::kVerbose) {
    const std::lock_guard lock(consoleMutex);
    printLine(text);
  }
}

void setVerbosity(Verbosity verbosity) { shown = verbosity; }

NoteCollector::NoteCollector() : outer_(collector) { collector = this; }

NoteCollector::~NoteCollector() { collector = outer_; }

Progress::Progress(std::size_t total)
    : total_(total),
      shown_(total > 1 && shown != Verbosity::kQuiet && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  const std::lock_guard lock(consoleMutex);
  clearProgressLine();
}

void Progress::begin(std::string_view name) {
  const std::lock_guard lock(consoleMutex);
  name_ = printable(name);
  draw();
}

void Progress::end() {
  const std::lock_guard lock(consoleMutex);
  ++done_;
  draw();
}

void Progress::draw() const {
  if (!shown_) {
    return;
  }
  const std::size_t columns = terminalColumns();
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
  std::string line = columns < kNarrow ? "" : bar(columns / 4, done_, total_);
  line += fmt::format("{}/{} {:3} %  ", done_, total_, 100 * done_ / total_);
  if (done_ > 0) {
    const auto left = static_cast<double>(total_ - done_) / static_cast<double>(done_);
    line += duration(passed.count() * left) + " left  ";
  }
  line += name_;
  std::fputs(fmt::format("\r{}\x1b[K", shortened(line, columns - 1)).c_str(), stderr);
  std::fflush(stderr);
  progressLineOpen = true;
}

}  // namespace alg::tool
