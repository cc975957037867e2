// Photos through a chain of effects, several at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "tools/batch/apply.h"
#include "tools/batch/photo_list.h"
#include "tools/batch/report.h"
#include "tools/batch/resources.h"
#include "tools/effects/effect_chain.h"

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
  bool spareProcessor_ = false;  ///< fewer photos are worked on at once than there are processors
  std::atomic<std::size_t> next_ = 0;
  std::atomic<std::size_t> failed_ = 0;
  std::atomic<std::size_t> skipped_ = 0;
  std::atomic<bool> reportFailed_ = false;
};

}  // namespace alg::tool
