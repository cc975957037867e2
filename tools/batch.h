// Photos through a chain of effects, several at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "tools/apply.h"
#include "tools/effect_chain.h"
#include "tools/photo_list.h"
#include "tools/report.h"
#include "tools/resources.h"

namespace alg::tool {

/// Runs jobs on several threads; each takes the next job as soon as it has finished one.
class Batch {
 public:
  Batch(const ApplyRequest& request, EffectChain& effects, Report& report);

  /// Returns whether all succeeded; what a single job fails with is thrown. Throws Interrupted,
  /// once no thread is at work any more.
  bool run(const std::vector<PhotoJob>& jobs);

 private:
  void takeJobs(const std::vector<PhotoJob>& jobs, Progress& progress);
  /// Does a job and says what became of it; errors are in it.
  ReportLine settle(const PhotoJob& job);
  /// Returns its status.
  const char* doJob(const PhotoJob& job);
  void changePhoto(const PhotoJob& job);

  const ApplyRequest& request_;
  EffectChain& effects_;
  Report& report_;
  MemoryBudget memory_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<std::size_t> failed_ = 0;
  std::atomic<std::size_t> skipped_ = 0;
  std::atomic<bool> reportFailed_ = false;
};

}  // namespace alg::tool
