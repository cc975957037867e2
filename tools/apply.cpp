#include "tools/apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>
#include <set>

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

std::vector<fs::path> photosIn(const fs::path& folder) {
  std::vector<fs::path> photos;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path& path = entry->path();
    if (namedAsJpeg(path) && path.filename().native().front() != '.' && !entry->is_directory()) {
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

/// Each input under its own name in the output folder.
std::vector<Job> jobsInto(const fs::path& folder, const std::vector<fs::path>& inputs) {
  std::vector<Job> jobs;
  std::set<fs::path> outputs;
  for (const fs::path& input : inputs) {
    const auto photos = fs::is_directory(input) ? photosIn(input) : std::vector{input};
    for (const fs::path& photo : photos) {
      jobs.push_back({photo, folder / photo.filename()});
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

bool runJobs(const NamedEffect& effect, const std::vector<Job>& jobs, const ApplyRequest& request) {
  bool succeeded = true;
  Progress progress(jobs.size());
  for (const Job& job : jobs) {
    throwIfInterrupted();
    progress.next(job.input.filename().string());
    try {
      auto [photo, metadata] = readPhoto(job.input);
      if (effect.classic != nullptr) {
        applyClassic(*effect.classic, request.parameters, photo);
      } else {
        cropToEven(photo, job.input);
        applyEffect(*effect.road, photo);
      }
      writePhoto(job.output, photo, metadata, request.quality);
    } catch (const UserError& error) {
      complain(error.what());
      succeeded = false;
    } catch (const std::bad_alloc&) {
      complain(fmt::format("{}: not enough memory", job.input.string()));
      succeeded = false;
    }
  }
  return succeeded;
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
    return runJobs(effect, {{inputs.front(), output}}, request);
  }
  if (fs::exists(output) && !fs::is_directory(output)) {
    throw WrongUse(fmt::format("{} is a file; several photos go into a folder", output.string()));
  }
  const std::vector<Job> jobs = jobsInto(output, inputs);
  const OutputFolder folder(output);
  return runJobs(effect, jobs, request);
}

}  // namespace alg::tool
