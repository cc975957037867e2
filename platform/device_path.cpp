#include "platform/device_path.h"

#include <cstdlib>

namespace alg {

std::string devicePath(std::string_view path) {
  std::string result;
#ifndef __ANDROID__
  if (const char* root = std::getenv("ALGORITHM_DEVICE_ROOT")) {
    result = root;
  }
#endif
  return result.append(path);
}

}  // namespace alg
