#include "tools/batch/photo_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <system_error>

#include "tools/files/file_errors.h"
#include "tools/photos/picture_format.h"
#include "tools/shell/failure.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

void take(const fs::directory_entry& entry, PhotoFolder& found) {
  std::error_code ignored;
  if (!namedAsPhoto(entry.path())) {
    ++found.otherFiles;
  } else if (entry.is_regular_file(ignored)) {
    found.photos.push_back(entry.path());
  } else {
    ++found.noFiles;
  }
}

}  // namespace

PhotoFolder photosIn(const fs::path& folder, const fs::path& output, bool recursive) {
  PhotoFolder found;
  std::vector<fs::path> folders = {folder};
  while (!folders.empty()) {
    const fs::path current = folders.back();
    folders.pop_back();
    std::error_code error;
    for (fs::directory_iterator entry(current, error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code ignored;
      if (entry->path().filename().native().front() == '.') {
        continue;
      }
      if (!entry->is_directory(ignored)) {
        take(*entry, found);
      } else if (recursive && !entry->is_symlink(ignored) &&
                 !fs::equivalent(entry->path(), output, ignored)) {
        folders.push_back(entry->path());
      }
    }
    if (error && current == folder) {
      failFile("read", folder, error.value());
    }
    if (error) {
      found.problems.push_back(
          fmt::format("cannot read {}: {}", current.string(), error.message()));
    }
  }
  std::sort(found.photos.begin(), found.photos.end());
  return found;
}

}  // namespace alg::tool
