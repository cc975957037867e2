#include "platform/picture_cache.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <new>
#include <utility>

#include "platform/device_path.h"

namespace alg {
namespace {

/// The coarsest file systems count time in steps of two seconds.
constexpr int64_t kSettlingSeconds = 2;
/// Later than any use.
constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

/// Whether any change from now on is bound to show in the file's times.
bool isSettled(const FileState& file) {
  timespec now{};
  if (clock_gettime(CLOCK_REALTIME, &now) != 0) {
    return false;
  }
  const FileTime limit{now.tv_sec - kSettlingSeconds, now.tv_nsec};
  return file.modified < limit && file.changed < limit;
}

}  // namespace

PictureCache::Kept* PictureCache::find(const std::string& path) {
  auto* kept = std::ranges::find(kept_, path, &Kept::path);
  return kept != kept_.end() ? kept : nullptr;
}

void PictureCache::keep(std::string&& path, const FileState& file, const Bitmap& picture) {
  Bitmap shown = picture;
  if (isLarge(shown)) {
    shown.pixels.reset();
  }
  const auto bytesOf = [](const Bitmap& bitmap) { return bitmap.pixels ? bitmap.bytes() : 0; };
  const auto lastShown = [](const Kept& kept) {
    return kept.picture.pixels ? kept.lastUse : kNever;
  };
  std::size_t bytes = bytesOf(shown);
  for (const Kept& kept : kept_) {
    bytes += bytesOf(kept.picture);
  }
  while (bytes > kMostBytes) {
    Kept& oldest = *std::ranges::min_element(kept_, {}, lastShown);
    bytes -= bytesOf(oldest.picture);
    oldest = {};
  }
  *std::ranges::min_element(kept_, {}, &Kept::lastUse) = {std::move(path), file, std::move(shown),
                                                          ++uses_};
}

bool PictureCache::load(std::string_view name, PictureUse use, Bitmap& bitmap) try {
  std::string place = devicePath(kPictureFolder).append(name);
  PngFile file(place.c_str());
  const bool settled = file.isOpen() && isSettled(file.state());
  if (Kept* kept = find(place)) {
    const bool enough = kept->picture.pixels != nullptr || use == PictureUse::kVerdict;
    if (settled && enough && kept->file == file.state()) {
      kept->lastUse = ++uses_;
      bitmap = kept->picture;
      return true;
    }
    *kept = {};
  }
  if (!file.readSize()) {
    return false;
  }
  if (use != PictureUse::kKeep && isLarge(bitmap) &&
      isLarge({nullptr, file.width(), file.height()})) {
    bitmap = {};
  }
  if (!file.decode(bitmap)) {
    return false;
  }
  if (settled) {
    keep(std::move(place), file.state(), bitmap);
  }
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace alg
