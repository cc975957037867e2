// What the user reads on stderr: complaints, notes and, on a terminal, a progress line.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "tools/failure.h"

namespace alg::tool {

/// Prints "camera-effects: text" as one line, each text once per run: a batch would repeat it per
/// file. Control characters (in file names) become '?'. From any thread.
void complain(std::string_view text);

/// Complains about what is not an error.
void note(std::string_view text);

/// One line, rewritten in place: "[=====>    ] 5/9  55 %  0:03 left  name.jpg". Silent when stderr
/// is no terminal or there is only one step.
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
