// A line of JSON for each photo of a batch.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "tools/shell/failure.h"

namespace alg::tool {

struct ReportLine {
  std::string in;
  std::string out;
  const char* status = "done";  ///< or "skipped", "failed", "planned"
  ExitCode code = ExitCode::kDone;
  double ms = 0;
  std::vector<std::string> notes{};  ///< the error among them
};

/// Thread-safe. Each line is there as soon as its photo is finished, whole, whatever ends the
/// process afterwards.
class Report {
 public:
  /// @param path  a file to make anew, a stream, "-" for the standard output, or empty for none.
  /// Throws UserError; WrongUse for a file that is something else than a report.
  explicit Report(std::filesystem::path path);
  ~Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  /// Throws UserError.
  void add(const ReportLine& line);

 private:
  std::filesystem::path path_;
  int file_ = -1;
  std::mutex mutex_;
};

/// Text as a JSON string. A byte that is not part of a UTF-8 character becomes a lone surrogate,
/// U+DC80 to U+DCFF, as Python's os.fsdecode() has it, so that every file name can be told.
std::string jsonString(std::string_view text);

}  // namespace alg::tool
