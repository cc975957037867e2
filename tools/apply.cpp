#include "tools/apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <memory>
#include <new>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "tools/console.h"
#include "tools/device_root.h"
#include "tools/effect_names.h"
#include "tools/files.h"
#include "tools/road.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

struct Job {
  fs::path input;
  fs::path output;
  bool inTree = false;  ///< of a folder with its sub-folders: those of the output may be missing
};

/// The output folder; one that was made for nothing goes away again.
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

/// The photos of a folder; with `recursive` those below it, too, but for what is in `output`.
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

/// Each input under its own name in the output folder, that of a folder with its sub-folders.
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

const ClassicOption* optionOf(const ClassicEffect& effect, std::string_view name) {
  const auto* const found = std::ranges::find(effect.options, name, &ClassicOption::name);
  return found != effect.options.end() ? &*found : nullptr;
}

void checkOptions(const NamedEffect& effect, const ApplyRequest& request) {
  for (const std::string& name : request.effectOptions) {
    if (effect.classic != nullptr && optionOf(*effect.classic, name) != nullptr) {
      continue;
    }
    const auto owner = std::ranges::find_if(
        classicEffects(), [&](const auto& other) { return optionOf(other, name) != nullptr; });
    throw WrongUse(
        fmt::format("{} is an option of {}, not of {}", name, owner->name, request.effect));
  }
}

/// The user's pictures in the place of the device's; none when the user names none.
std::unique_ptr<UserDevice> usersPictures(const NamedEffect& effect, const ApplyRequest& request) {
  std::unique_ptr<UserDevice> pictures;
  for (const auto& [option, file] : request.pictures) {
    if (!pictures) {
      pictures = std::make_unique<UserDevice>();
    }
    pictures->addPicture(file, optionOf(*effect.classic, option)->picture);
  }
  if (pictures) {
    checkPictures(*effect.classic);
  }
  return pictures;
}

/// Jobs on several threads, each of which takes the next one when it has done one.
class Batch {
 public:
  Batch(const NamedEffect& effect, std::vector<Job> jobs, const ApplyRequest& request)
      : effect_(effect), request_(request), jobs_(std::move(jobs)), progress_(jobs_.size()) {}

  /// Returns whether all succeeded. Throws Interrupted when no thread is at work any more.
  bool run();

 private:
  void takeJobs();
  void doJob(const Job& job) const;

  const NamedEffect& effect_;
  const ApplyRequest& request_;
  std::vector<Job> jobs_;
  Progress progress_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> succeeded_ = true;
};

bool Batch::run() {
  const unsigned wanted = request_.threads > 0 ? static_cast<unsigned>(request_.threads)
                                               : std::thread::hardware_concurrency();
  const auto threads = std::min<std::size_t>({wanted, kMostThreads, jobs_.size()});
  {
    std::vector<std::jthread> others;
    try {
      while (others.size() + 1 < threads) {
        others.emplace_back([this] { takeJobs(); });
      }
    } catch (const std::system_error&) {  // no more threads to be had: fewer do it, too
    }
    takeJobs();
  }
  throwIfInterrupted();
  return succeeded_;
}

void Batch::takeJobs() {
  for (std::size_t i = next_++; i < jobs_.size(); i = next_++) {
    const std::string name = jobs_[i].input.string();
    try {
      throwIfInterrupted();
      progress_.begin(jobs_[i].input.filename().string());
      doJob(jobs_[i]);
    } catch (const Interrupted&) {
      return;  // run() tells
    } catch (const std::bad_alloc&) {
      complain(fmt::format("{}: not enough memory", name));
      succeeded_ = false;
    } catch (const std::exception& error) {
      complain(error.what());
      succeeded_ = false;
    }
    progress_.end();
  }
}

void Batch::doJob(const Job& job) const {
  auto [photo, metadata] = readPhoto(job.input);
  if (effect_.classic != nullptr) {
    applyClassic(*effect_.classic, request_.parameters, photo);
  } else {
    cropToEven(photo, job.input);
    applyEffect(*effect_.road, photo);
  }
  if (job.inTree) {
    std::error_code error;
    const fs::path folder = job.output.parent_path();
    fs::create_directories(folder, error);
    if (error) {
      throw UserError(
          fmt::format("cannot create the folder {}: {}", folder.string(), error.message()));
    }
  }
  writePhoto(job.output, photo, metadata, request_.quality);
}

}  // namespace

bool applyToFiles(const ApplyRequest& request) {
  const NamedEffect effect = findEffect(request.effect);
  if (effect.road != nullptr && !effect.road->changesFrame()) {
    note(fmt::format("{} is a name that passes through: photos stay as they are, up to rounding",
                     request.effect));
  }
  checkOptions(effect, request);
  const auto pictures = usersPictures(effect, request);
  const fs::path& output = request.paths.back();
  const std::vector<fs::path> inputs(request.paths.begin(), request.paths.end() - 1);
  const bool intoFolder = inputs.size() > 1 || fs::is_directory(inputs.front()) ||
                          fs::is_directory(output) || !output.has_filename();
  if (!intoFolder) {
    return Batch(effect, {{inputs.front(), output}}, request).run();
  }
  if (fs::exists(output) && !fs::is_directory(output)) {
    throw WrongUse(fmt::format("{} is a file; several photos go into a folder", output.string()));
  }
  std::vector<Job> jobs = jobsInto(output, inputs, request.recursive);
  const OutputFolder folder(output);
  return Batch(effect, std::move(jobs), request).run();
}

}  // namespace alg::tool
