#include "tools/batch/apply.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "tools/batch/batch.h"
#include "tools/batch/photo_list.h"
#include "tools/batch/report.h"
#include "tools/effects/effect_chain.h"
#include "tools/files/file_errors.h"
#include "tools/files/files.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// The output folder; removed again if it was made here and nothing was written to it.
class OutputFolder {
 public:
  explicit OutputFolder(const fs::path& path) : path_(path) {
    std::error_code error;
    made_ = fs::create_directory(path, error);
    if (!fs::is_directory(path)) {
      failFile("create the folder", path, error ? error.value() : EEXIST);
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

/// One input to one output, both perhaps streams.
bool isSinglePhoto(const ApplyRequest& request) {
  if (!request.list.empty() || !request.names.empty() || request.paths.size() != 2) {
    return false;
  }
  const fs::path& output = request.paths.back();
  return !fs::is_directory(request.paths.front()) && !fs::is_directory(output) &&
         output.has_filename();
}

void checkPaths(const ApplyRequest& request) {
  const std::size_t fewest = (request.names.empty() ? 1U : 0U) + (request.list.empty() ? 1U : 0U);
  if (request.paths.size() < fewest) {
    throw WrongUse(request.names.empty() ? "FILES: an input and an output are needed; see "
                                           "camera-effects apply --help"
                                         : "FILES: an input or --files-from is needed");
  }
  if (request.nulSeparated && request.list.empty()) {
    throw WrongUse("-0 goes with --files-from");
  }
  const auto streams = std::ranges::count(request.paths, kStandardStream);
  if (streams > 0 && !isSinglePhoto(request)) {
    throw WrongUse("- stands for one photo to one output; several go by their names");
  }
  const bool photosOut = streams > 0 && request.paths.back() == kStandardStream;
  if (request.report == kStandardStream && (photosOut || request.dryRun)) {
    throw WrongUse("--report -: the standard output is taken already; name a file");
  }
}

/// Where the photos come from when there may be several. Throws WrongUse.
PhotoSources sourcesOf(const ApplyRequest& request, const EffectChain& effects) {
  PhotoSources sources{.inputs = request.paths,
                       .list = request.list,
                       .nulSeparated = request.nulSeparated,
                       .recursive = request.recursive,
                       .shard = request.shard.empty() ? Shard() : Shard(request.shard)};
  if (!request.names.empty()) {
    sources.names.emplace(request.names, effects.title());
    return sources;
  }
  sources.folder = request.paths.back();
  sources.inputs.pop_back();
  if (fs::exists(sources.folder) && !fs::is_directory(sources.folder)) {
    throw WrongUse(
        fmt::format("{} is a file; several photos go into a folder", sources.folder.string()));
  }
  for (const fs::path& input : sources.inputs) {
    std::error_code ignored;  // of a folder that does not exist yet
    if (fs::equivalent(input, sources.folder, ignored)) {
      throw WrongUse(fmt::format("the photos in {} would be replaced; name another output folder",
                                 input.string()));
    }
  }
  return sources;
}

}  // namespace

bool applyToFiles(const ApplyRequest& request) {
  setVerbosity(request.verbosity);
  checkPaths(request);
  EffectChain effects(request.effects, request.choices, request.mix,
                      request.asFrame ? Way::kFrame : Way::kPhoto);
  if (isSinglePhoto(request)) {
    const Shard shard = request.shard.empty() ? Shard() : Shard(request.shard);
    std::vector<PhotoJob> jobs;
    if (shard.holds(request.paths.front().string())) {
      jobs.push_back({.input = request.paths.front().string(),
                      .output = request.paths.back().string(),
                      .inPlace = true});
    }
    Report report(request.report);
    return Batch(request, effects, report).run(jobs);
  }
  const PhotoSources sources = sourcesOf(request, effects);
  const std::vector<PhotoJob> jobs = photoJobs(sources);
  std::optional<OutputFolder> folder;
  if (!sources.folder.empty() && !request.dryRun) {
    folder.emplace(sources.folder);
  }
  Report report(request.report);  // perhaps in that folder
  return Batch(request, effects, report).run(jobs);
}

}  // namespace alg::tool
