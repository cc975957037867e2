// camera-effects blend: two photos into one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/photos/photo_options.h"

namespace alg::tool {

struct BlendRequest {
  std::string mode = "mix";   ///< the operation: "mix", "lighten" or "darken"
  std::optional<int> weight;  ///< for "mix": of the first photo, 0 to 256; half without it
  std::filesystem::path first;
  std::filesystem::path second;
  std::filesystem::path output;
  PhotoOptions options;
};

/// Throws UserError.
void blendPhotos(const BlendRequest& request);

}  // namespace alg::tool
