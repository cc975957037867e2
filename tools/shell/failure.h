// Why something can't be done: exceptions, each with its sentence and the exit code it leads to.
#pragma once

#include <stdexcept>
#include <string>

namespace alg::tool {

enum class ExitCode : int {
  kDone = 0,
  kFailed = 1,     ///< some photos of several; or a place that can't be written, a missing engine
  kWrongUse = 2,   ///< a command line that is wrong whatever the files hold
  kBadInput = 3,   ///< an input that is missing or damaged, and will be tomorrow
  kTryAgain = 75,  ///< no memory, no room, an I/O error: another run may succeed (EX_TEMPFAIL)
};

/// Something the user asked for that can't be done. what() is the whole explanation, on one line.
class UserError : public std::runtime_error {
 public:
  explicit UserError(const std::string& sentence, ExitCode code = ExitCode::kFailed)
      : std::runtime_error(sentence), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

class WrongUse : public UserError {
 public:
  explicit WrongUse(const std::string& sentence) : UserError(sentence, ExitCode::kWrongUse) {}
};

class BadInput : public UserError {
 public:
  explicit BadInput(const std::string& sentence) : UserError(sentence, ExitCode::kBadInput) {}
};

class TryAgain : public UserError {
 public:
  explicit TryAgain(const std::string& sentence) : UserError(sentence, ExitCode::kTryAgain) {}
};

}  // namespace alg::tool
