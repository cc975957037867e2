#include "tools/apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <new>
#include <set>

#include "tools/console.h"
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
      throw UserError(fmt::format("cannot create the folder {}: {}", path.string(),
                                  error ? error.message() : "it is a file"));
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
      if (!outputs.insert(jobs.back().output).second) {
        throw UserError(
            fmt::format("two inputs would be written to {}", jobs.back().output.string()));
      }
    }
  }
  return jobs;
}

bool runJobs(const EffectTableEntry& effect, const std::vector<Job>& jobs, int quality) {
  bool succeeded = true;
  Progress progress(jobs.size());
  for (const Job& job : jobs) {
    throwIfInterrupted();
    progress.next(job.input.filename().string());
    try {
      Photo photo = readPhoto(job.input);
      applyEffect(effect, photo);
      writeFile(job.output,
                bytesOf(encodePixels(photo.pixels.get(), photo.width, photo.height, quality)));
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
  const EffectTableEntry& effect = findEffect(request.effect);
  if (!effect.changesFrame()) {
    note(fmt::format("{} is a name that passes through: photos stay as they are, up to rounding",
                     effect.name));
  }
  const fs::path& output = request.paths.back();
  const std::vector<fs::path> inputs(request.paths.begin(), request.paths.end() - 1);
  const bool intoFolder = inputs.size() > 1 || fs::is_directory(inputs.front()) ||
                          fs::is_directory(output) || !output.has_filename();
  if (!intoFolder) {
    return runJobs(effect, {{inputs.front(), output}}, request.quality);
  }
  const std::vector<Job> jobs = jobsInto(output, inputs);
  const OutputFolder folder(output);
  return runJobs(effect, jobs, request.quality);
}

}  // namespace alg::tool
