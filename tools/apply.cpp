#include "tools/apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <new>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "tools/console.h"
#include "tools/effect_names.h"
#include "tools/files.h"
#include "tools/photo_effect.h"
#include "tools/photo_file.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

struct Job {
  fs::path input;
  fs::path output;
  bool inTree = false;  ///< found below a folder: the output may lack that sub-folder
};

/// The output folder; removed again if it was made here and nothing was written to it.
class OutputFolder {
 public:
  explicit OutputFolder(const fs::path& path) : path_(path) {
    std::error_code error;
    made_ = fs::create_directory(path, error);
    if (!fs::is_directory(path)) {
      throw UserError(
          fmt::format("cannot create the folder {}: {}", path.string(), error.message()));
    }
  }
  ~OutputFolder() {
    std::error_code ignored;
    if (made_) {
      fs::remove(path_, ignored);  // only when empty
    }
  }
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

 private:
  fs::path path_;
  bool made_;
};

bool namedAsJpeg(const fs::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == ".jpg" || extension == ".jpeg";
}

/// The photos in a folder and, if `recursive`, in its sub-folders, except those in `output`.
std::vector<fs::path> photosIn(const fs::path& folder, const fs::path& output, bool recursive) {
  std::vector<fs::path> photos;
  std::error_code error;
  std::error_code ignored;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path& path = entry->path();
    const bool hidden = path.filename().native().front() == '.';
    if (entry->is_directory(ignored)) {
      if (!recursive || hidden || fs::equivalent(path, output, ignored)) {
        entry.disable_recursion_pending();
      }
    } else if (namedAsJpeg(path) && !hidden) {
      photos.push_back(path);
    }
  }
  if (error) {
    throw UserError(fmt::format("cannot read {}: {}", folder.string(), error.message()));
  }
  if (photos.empty()) {
    throw UserError(fmt::format("{}: no .jpg or .jpeg files in this folder", folder.string()));
  }
  std::sort(photos.begin(), photos.end());
  return photos;
}

/// Each input goes into the output folder under its own name; photos of a folder keep their path
/// below it.
std::vector<Job> jobsInto(const fs::path& output, const std::vector<fs::path>& inputs,
                          bool recursive) {
  std::vector<Job> jobs;
  std::set<fs::path> outputs;
  for (const fs::path& input : inputs) {
    const bool whole = fs::is_directory(input);
    for (const fs::path& photo : whole ? photosIn(input, output, recursive) : std::vector{input}) {
      jobs.push_back({photo, output / (whole ? photo.lexically_relative(input) : photo.filename()),
                      recursive && whole});
      std::error_code ignored;  // an output that does not exist yet
      if (fs::equivalent(photo, jobs.back().output, ignored)) {
        throw WrongUse(
            fmt::format("{} would be replaced; name another output folder", photo.string()));
      }
      if (!outputs.insert(jobs.back().output).second) {
        throw WrongUse(
            fmt::format("two inputs would be written to {}", jobs.back().output.string()));
      }
    }
  }
  return jobs;
}

/// Runs jobs on several threads; each takes the next job as soon as it has finished one.
class Batch {
 public:
  /// Throws UserError when the effect can't run as the user wants it.
  explicit Batch(const ApplyRequest& request)
      : request_(request),
        effect_(findEffect(request.effect)),
        call_(callWith(request.choices, effect_)),
        pictures_(request.choices.pictures) {
    if (!request.choices.pictures.empty()) {
      pictures_.of(effect_, 1, 1);
    }
  }

  const Operation& effect() const { return effect_; }
  /// Returns whether all succeeded. Throws Interrupted, once no thread is at work any more.
  bool run(std::vector<Job> jobs);

 private:
  void takeJobs(Progress& progress);
  void doJob(const Job& job);

  const ApplyRequest& request_;
  const Operation& effect_;
  const Call call_;
  EffectPictures pictures_;
  std::vector<Job> jobs_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> succeeded_ = true;
};

bool Batch::run(std::vector<Job> jobs) {
  jobs_ = std::move(jobs);
  Progress progress(jobs_.size());
  const unsigned wanted = request_.threads > 0 ? static_cast<unsigned>(request_.threads)
                                               : std::thread::hardware_concurrency();
  const auto threads = std::min<std::size_t>({wanted, kMostThreads, jobs_.size()});
  {
    std::vector<std::jthread> others;
    try {
      while (others.size() + 1 < threads) {
        others.emplace_back([&] { takeJobs(progress); });
      }
    } catch (const std::system_error&) {  // the system has no more: fewer do it, too
    }
    takeJobs(progress);
  }
  throwIfInterrupted();
  return succeeded_;
}

void Batch::takeJobs(Progress& progress) {
  for (std::size_t i = next_++; i < jobs_.size(); i = next_++) {
    const std::string name = jobs_[i].input.string();
    try {
      throwIfInterrupted();
      progress.begin(jobs_[i].input.filename().string());
      doJob(jobs_[i]);
    } catch (const Interrupted&) {
      return;  // run() reports it
    } catch (const std::bad_alloc&) {
      complain(fmt::format("{}: not enough memory", name));
      succeeded_ = false;
    } catch (const std::exception& error) {
      complain(error.what());
      succeeded_ = false;
    }
    progress.end();
  }
}

void Batch::doJob(const Job& job) {
  PhotoFile file = readPhoto(job.input, request_.options);
  if (takesFrames(effect_)) {
    cropToEven(file.photo, job.input);
  }
  applyEffect(effect_, call_, pictures_, file.photo);
  if (job.inTree) {
    std::error_code error;
    const fs::path folder = job.output.parent_path();
    fs::create_directories(folder, error);
    if (error) {
      throw UserError(
          fmt::format("cannot create the folder {}: {}", folder.string(), error.message()));
    }
  }
  writePhoto(job.output, file, request_.options);
}

}  // namespace

bool applyToFiles(const ApplyRequest& request) {
  Batch batch(request);
  if (!isEffect(batch.effect())) {
    note(fmt::format("{} is a name that passes through: photos stay as they are, up to rounding",
                     request.effect));
  }
  const fs::path& output = request.paths.back();
  const std::vector<fs::path> inputs(request.paths.begin(), request.paths.end() - 1);
  const bool intoFolder = inputs.size() > 1 || fs::is_directory(inputs.front()) ||
                          fs::is_directory(output) || !output.has_filename();
  if (!intoFolder) {
    return batch.run({{inputs.front(), output}});
  }
  if (fs::exists(output) && !fs::is_directory(output)) {
    throw WrongUse(fmt::format("{} is a file; several photos go into a folder", output.string()));
  }
  std::vector<Job> jobs = jobsInto(output, inputs, request.recursive);
  const OutputFolder folder(output);
  return batch.run(std::move(jobs));
}

}  // namespace alg::tool
