// What the user reads on stderr: complaints, notes and, on a terminal, a progress line.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/shell/failure.h"

namespace alg::tool {

/// Prints "camera-effects: text" as one line, each text once per run: a batch would repeat it per
/// file. Control characters (in file names) become '?'. From any thread.
void complain(std::string_view text);

/// Complains about what is not an error, unless notes are off.
void note(std::string_view text);

/// Says that all is well, as a line of its own: only for users who want to know.
void say(std::string_view text);

enum class Verbosity : uint8_t {
  kQuiet,   ///< errors only: no notes, no progress
  kNormal,  ///< errors, notes and progress
  kVerbose  ///< and what say() says
};
void setVerbosity(Verbosity verbosity);

/// Collects the notes of one thread, beside printing them.
class NoteCollector {
 public:
  NoteCollector();
  ~NoteCollector();
  NoteCollector(const NoteCollector&) = delete;
  NoteCollector& operator=(const NoteCollector&) = delete;

  std::vector<std::string> take() { return std::move(notes_); }

 private:
  friend void note(std::string_view text);
  std::vector<std::string> notes_;
  NoteCollector* outer_;
};

/// One line, rewritten in place: "[=====>    ] 5/9  55 %  0:03 left  name.jpg". Silent when stderr
/// is no terminal, there is only one step, or notes are off.
class Progress {
 public:
  explicit Progress(std::size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Call at the start and at the end of each step, from any thread.
  void begin(std::string_view name);
  void end();

 private:
  void draw() const;

  std::size_t total_;
  std::size_t done_ = 0;
  std::string name_;  ///< of the step that began last
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool shown_;
};

}  // namespace alg::tool
