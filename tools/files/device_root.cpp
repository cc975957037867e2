#include "tools/files/device_root.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace alg::tool {

void useSamplePictures() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const fs::path& prefix : {folder, folder.parent_path()}) {
    const fs::path root = prefix / "share/libalgorithm/device";
    if (fs::is_directory(root, error)) {
      constexpr int kKeepTheUsers = 0;
      setenv("ALGORITHM_DEVICE_ROOT", root.c_str(), kKeepTheUsers);
      return;
    }
  }
}

}  // namespace alg::tool
