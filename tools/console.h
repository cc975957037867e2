// What the user reads on stderr: complaints, notes and, on a terminal, a progress line.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace alg::tool {

/// Something the user asked for that can't be done. what() is the whole explanation, on one line.
class UserError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A command line that is wrong whatever the files hold.
class WrongUse : public UserError {
 public:
  using UserError::UserError;
};

/// Prints "camera-effects: text" as one line, each text once per run: a batch would repeat it per
/// file. Control characters (in file names) become '?'.
void complain(std::string_view text);

/// Complains about what is not an error.
void note(std::string_view text);

/// One line, rewritten in place: "3/12 name.jpg". Silent when stderr is no terminal or there is
/// only one step.
class Progress {
 public:
  explicit Progress(std::size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Call at the start of each step.
  void next(std::string_view name);

 private:
  std::size_t total_;
  std::size_t current_ = 0;
  bool shown_;
};

}  // namespace alg::tool
