#include "tools/batch/batch.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

#include "tools/batch/photo_memory.h"
#include "tools/effects/photo_stream.h"
#include "tools/files/files.h"
#include "tools/photos/photo_file.h"
#include "tools/shell/interrupts.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// Whether an output needs no more work: it took its name when it was complete.
bool isComplete(const fs::path& output) {
  std::error_code error;
  return fs::is_regular_file(output, error) && fs::file_size(output, error) > 0 && !error;
}

bool isSameFile(const fs::path& a, const fs::path& b) {
  std::error_code ignored;  // of an output that does not exist yet
  return fs::equivalent(a, b, ignored);
}

/// What main() does with errors of a single job.
[[noreturn]] void fail(const ReportLine& line) { throw UserError(line.notes.back(), line.code); }

}  // namespace

Batch::Batch(const ApplyRequest& request, EffectChain& effects, Report& report)
    : request_(request),
      effects_(effects),
      report_(report),
      memory_(request.memory != 0 ? request.memory : memoryLeft() / 2) {}

bool Batch::run(const std::vector<PhotoJob>& jobs) {
  if (jobs.size() == 1) {
    spareProcessor_ = processors() > 1;
    const ReportLine line = settle(jobs.front());
    report_.add(line);
    if (line.code != ExitCode::kDone) {
      fail(line);
    }
    return true;
  }
  Progress progress(jobs.size());
  const int wanted = request_.dryRun        ? 1  // in order
                     : request_.threads > 0 ? request_.threads
                                            : processors();
  const auto threads =
      std::min({static_cast<std::size_t>(wanted), std::size_t{kMostThreads}, jobs.size()});
  spareProcessor_ = threads < static_cast<std::size_t>(processors());
  say(fmt::format("{} photos, {} at once", jobs.size(), threads));
  {
    std::vector<std::jthread> others;
    try {
      while (others.size() + 1 < threads) {
        others.emplace_back([&] { takeJobs(jobs, progress); });
      }
    } catch (const std::system_error&) {  // the system has no more: fewer do it, too
    }
    takeJobs(jobs, progress);
  }
  throwIfInterrupted();
  const std::string were = fmt::format("{} of {} photos failed, {} were there already",
                                       failed_.load(), jobs.size(), skipped_.load());
  if (failed_ > 0) {
    complain(were);
  } else {
    say(were);
  }
  return failed_ == 0 && !reportFailed_;
}

void Batch::takeJobs(const std::vector<PhotoJob>& jobs, Progress& progress) {
  for (std::size_t i = next_++; i < jobs.size(); i = next_++) {
    try {
      throwIfInterrupted();
      progress.begin(fs::path(jobs[i].input).filename().string());
      const ReportLine line = settle(jobs[i]);
      if (line.code != ExitCode::kDone) {
        ++failed_;
        complain(line.notes.back());
      }
      report_.add(line);
    } catch (const Interrupted&) {
      return;                                // run() reports it
    } catch (const std::exception& error) {  // of the report
      complain(error.what());
      reportFailed_ = true;
    }
    progress.end();
  }
}

ReportLine Batch::settle(const PhotoJob& job) {
  const auto start = std::chrono::steady_clock::now();
  NoteCollector notes;
  ReportLine line{.in = job.input, .out = job.output};
  const auto failed = [&](ExitCode code, std::string why) {
    line.status = "failed";
    line.code = code;
    line.notes = notes.take();
    line.notes.push_back(std::move(why));
  };
  try {
    line.status = doJob(job);
    line.notes = notes.take();
  } catch (const UserError& error) {
    failed(error.code(), error.what());
  } catch (const std::bad_alloc&) {
    failed(ExitCode::kTryAgain, fmt::format("{}: not enough memory", job.input));
  } catch (const std::exception& error) {
    failed(ExitCode::kFailed, fmt::format("{}: {}", job.input, error.what()));
  }
  const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
  line.ms = passed.count();
  if (line.code == ExitCode::kDone) {
    say(fmt::format("{} -> {}: {}, {:.0f} ms", line.in, line.out, line.status, line.ms));
  }
  return line;
}

const char* Batch::doJob(const PhotoJob& job) {
  if (!job.problem.empty()) {
    throw UserError(job.problem, job.code);
  }
  std::error_code error;
  const bool exists = fs::exists(job.input, error);
  if (job.isFile && exists && !fs::is_regular_file(job.input, error)) {
    throw BadInput(fmt::format("{}: not a regular file", job.input));
  }
  const bool toFile = job.output != kStandardStream;
  if (toFile && request_.skipExisting && isComplete(job.output)) {
    ++skipped_;
    return "skipped";
  }
  if (!job.inPlace && isSameFile(job.input, job.output)) {
    throw WrongUse(fmt::format("{} would be replaced; name another output", job.input));
  }
  if (toFile && request_.noClobber && fs::exists(job.output) && !fs::is_other(job.output)) {
    throw UserError(fmt::format("{} exists and is not replaced (--no-clobber)", job.output));
  }
  if (request_.dryRun) {
    if (job.input != kStandardStream && !exists) {
      throw BadInput(fmt::format("cannot read {}: there is no such file", job.input));
    }
    fmt::print("{} -> {}\n", job.input, job.output);
    return "planned";
  }
  changePhoto(job);
  return "done";
}

void Batch::changePhoto(const PhotoJob& job) {
  const std::unique_ptr<PhotoStream> stream =
      PhotoStream::open(job.input, job.output, effects_, request_.options);
  const MemoryBudget::Share share(memory_, stream ? PhotoStream::kMemory : memoryFor(job.input));
  throwIfInterrupted();
  const WriteOptions how{.source = job.input,
                         .keepTimes = request_.keepTimes,
                         .replace = !request_.noClobber,
                         .durable = request_.skipExisting};
  const auto makeFolder = [&] {
    if (job.makesFolder) {
      createFolders(fs::path(job.output).parent_path());
    }
  };
  if (stream) {
    makeFolder();
    stream->run(effects_, job.output, request_.options, how, spareProcessor_);
    return;
  }
  PhotoFile file = readPhoto(job.input, request_.options);
  effects_.applyTo(file.photo, job.input);
  file.change.moved = effects_.movesPixels();
  makeFolder();
  writePhoto(job.output, file, request_.options, how);
}

}  // namespace alg::tool
