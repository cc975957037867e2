#include "tools/device_root.h"

#include <fmt/format.h>

#include <cstdlib>

#include "effect/effect_table.h"
#include "platform/bitmap.h"
#include "platform/device_path.h"
#include "tools/console.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

constexpr char kVariable[] = "ALGORITHM_DEVICE_ROOT";

}  // namespace

void useSamplePictures() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& prefix : {folder, folder.parent_path()}) {
    const fs::path root = prefix / "share/libalgorithm/device";
    if (fs::is_directory(root, error)) {
      constexpr int kKeepTheUsers = 0;
      setenv(kVariable, root.c_str(), kKeepTheUsers);
      return;
    }
  }
}

UserDevice::UserDevice() : root_(fs::temp_directory_path() / "device") {
  constexpr int kReplace = 1;
  setenv(kVariable, root_.path().c_str(), kReplace);
}

void UserDevice::addPicture(const fs::path& file, std::string_view name) {
  const std::string path = picturePath(name);
  fs::create_directories(devicePath(kPictureFolder));
  writeFile(devicePath(path), readFile(file));
  Bitmap decoded;
  if (!decodePngFile(path.c_str(), decoded)) {
    throw UserError(fmt::format("{}: not a PNG, or damaged beyond decoding", file.string()));
  }
}

void UserDevice::addLibrary(const fs::path& file, std::string_view devicePath) {
  std::error_code error;
  const fs::path target = fs::canonical(file, error);
  if (error) {
    throw UserError(fmt::format("{}: {}", file.string(), error.message()));
  }
  const fs::path link = alg::devicePath(devicePath);
  fs::create_directories(link.parent_path());
  fs::create_symlink(target, link);
}

std::string picturePath(std::string_view name) { return fmt::format("{}{}", kPictureFolder, name); }

PictureError missingPicture(std::string_view effect, std::string_view picture) {
  return PictureError{
      fmt::format("{}: cannot read its picture {}", effect, devicePath(picturePath(picture)))};
}

}  // namespace alg::tool
