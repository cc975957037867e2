#include "tools/batch/photo_list.h"

#include <fmt/format.h>

#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "tools/batch/photo_folder.h"
#include "tools/files/files.h"
#include "tools/photos/picture_format.h"
#include "tools/shell/console.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// A job, and what is needed while the list is made.
struct Candidate {
  PhotoJob job;
  std::string shardName;  ///< the input, for a photo of a folder its path below that
  bool chosen = false;    ///< named on the command line
  bool leftOut = false;
};

class ListMaker {
 public:
  explicit ListMaker(const PhotoSources& sources) : sources_(sources) {}

  void add(const fs::path& input, bool chosen);
  void settleCollisions();
  std::vector<PhotoJob> jobs();

 private:
  void addPhoto(const fs::path& input, std::string shardName, const fs::path& below, bool chosen);
  void addFolder(const fs::path& folder);
  void addProblem(const std::string& input, std::string problem, ExitCode code);

  const PhotoSources& sources_;
  std::vector<Candidate> candidates_;
};

std::string normal(const std::string& path) { return fs::path(path).lexically_normal().string(); }

/// Names of a list, without empty ones.
std::vector<std::string> namesIn(const fs::path& list, char separator) {
  const std::vector<uint8_t> bytes = readFile(list);
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::vector<std::string> names;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    if (end > start) {
      names.emplace_back(text.substr(start, end - start));
    }
    start = end + 1;
  }
  return names;
}

void ListMaker::addPhoto(const fs::path& input, std::string shardName, const fs::path& below,
                         bool chosen) {
  const bool named = sources_.names.has_value();
  PhotoJob job{.input = input.string(), .makesFolder = named || below.has_parent_path()};
  job.output = named ? sources_.names->of(job.input) : normal((sources_.folder / below).string());
  job.output = writableName(job.output).string();
  candidates_.push_back({std::move(job), std::move(shardName), chosen});
}

void ListMaker::addProblem(const std::string& input, std::string problem, ExitCode code) {
  candidates_.push_back({{input, "", std::move(problem), code}, input});
}

void ListMaker::addFolder(const fs::path& folder) {
  PhotoFolder found;
  try {
    found = photosIn(folder, sources_.folder, sources_.recursive);
  } catch (const UserError& error) {
    addProblem(folder.string(), error.what(), error.code());
    return;
  }
  for (const fs::path& photo : found.photos) {
    const fs::path below = photo.lexically_relative(folder);
    addPhoto(photo, below.string(), below, false);
  }
  for (std::string& problem : found.problems) {
    addProblem(folder.string(), std::move(problem), ExitCode::kBadInput);
  }
  if (!found.photos.empty() && found.otherFiles + found.noFiles > 0) {
    note(
        fmt::format("{}: left out {} without a photo's ending and {} that are no files (pipes, "
                    "devices, links to nothing)",
                    folder.string(), found.otherFiles, found.noFiles));
  }
  if (found.photos.empty() && found.problems.empty()) {
    addProblem(folder.string(), fmt::format("{}: no photos in this folder", folder.string()),
               ExitCode::kBadInput);
  }
}

void ListMaker::add(const fs::path& input, bool chosen) {
  std::error_code ignored;
  // Long lists, of which other machines do the most, are not looked up on the disk.
  if ((chosen || !namedAsPhoto(input)) && fs::is_directory(input, ignored)) {
    addFolder(input);
  } else {
    addPhoto(input, input.string(), input.filename(), chosen);
    candidates_.back().job.isFile = !chosen;
  }
}

void ListMaker::settleCollisions() {
  std::unordered_map<std::string_view, Candidate*> byOutput;
  for (Candidate& candidate : candidates_) {
    PhotoJob& job = candidate.job;
    if (!job.problem.empty()) {
      continue;
    }
    const auto [other, isNew] = byOutput.try_emplace(job.output, &candidate);
    PhotoJob& first = other->second->job;
    if (!isNew && first.input == job.input) {
      candidate.leftOut = true;  // named twice: done once
    } else if (!isNew) {
      job.problem =
          fmt::format("{} and {} would both be written to {}", first.input, job.input, job.output);
      job.code = ExitCode::kWrongUse;
      first.problem = job.problem;
      first.code = job.code;
    }
  }
  std::size_t results = 0;
  for (Candidate& candidate : candidates_) {
    const auto other = byOutput.find(normal(candidate.job.input));
    if (other == byOutput.end() || other->second->job.input == candidate.job.input) {
      continue;
    }
    if (candidate.chosen) {
      PhotoJob& writer = other->second->job;
      writer.problem =
          fmt::format("{} would replace the input {}", writer.input, candidate.job.input);
      writer.code = ExitCode::kWrongUse;
    } else if (!candidate.leftOut) {
      candidate.leftOut = true;
      ++results;
    }
  }
  if (results > 0) {
    note(fmt::format("left out {} of the inputs as results of an earlier run", results));
  }
}

std::vector<PhotoJob> ListMaker::jobs() {
  std::vector<PhotoJob> jobs;
  for (Candidate& candidate : candidates_) {
    if (!candidate.leftOut && sources_.shard.holds(candidate.shardName)) {
      jobs.push_back(std::move(candidate.job));
    }
  }
  return jobs;
}

}  // namespace

std::vector<PhotoJob> photoJobs(const PhotoSources& sources) {
  ListMaker maker(sources);
  for (const fs::path& input : sources.inputs) {
    maker.add(input, true);
  }
  if (!sources.list.empty()) {
    for (const std::string& name : namesIn(sources.list, sources.nulSeparated ? '\0' : '\n')) {
      maker.add(name == kStandardStream ? "./-" : name, false);
    }
  }
  maker.settleCollisions();
  return maker.jobs();
}

}  // namespace alg::tool
