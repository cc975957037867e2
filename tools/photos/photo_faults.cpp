#include "tools/photos/photo_faults.h"

#include <fmt/format.h>

#include <system_error>

#include "base/image_size.h"
#include "tools/shell/console.h"

namespace alg::tool {

std::string tooLarge(const std::filesystem::path& path, int64_t width, int64_t height) {
  return fmt::format("{}: too large: {}x{} pixels; at most {} on a side and {} million in all",
                     path.string(), width, height, kMaxPictureSide, kMaxPicturePixels / 1'000'000);
}

void refuseOrNote(const std::filesystem::path& path, const PhotoOptions& options,
                  std::string_view what) {
  if (!options.keepDamaged) {
    throw BadInput(
        fmt::format("{}: {}; --damaged keep goes on with the rest", path.string(), what));
  }
  note(fmt::format("{}: {}", path.string(), what));
}

void neverOverDamaged(const std::filesystem::path& photo, const std::filesystem::path& output) {
  std::error_code ignored;  // of an output that does not exist yet
  if (std::filesystem::equivalent(output, photo, ignored)) {
    throw BadInput(
        fmt::format("{}: damaged, and never replaced by what is left of it; name "
                    "another output",
                    output.string()));
  }
}

}  // namespace alg::tool
