#include "tools/photo_faults.h"

#include <fmt/format.h>

#include "base/image_size.h"
#include "tools/console.h"

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

}  // namespace alg::tool
