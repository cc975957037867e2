// camera-effects beauty: the face-beauty engine on a photo.
#pragma once

#include <filesystem>

#include "tools/photos/photo_options.h"

namespace alg::tool {

struct BeautyRequest {
  int smooth = 60;  // the engine's default levels
  int toning = 60;
  int slimming = 30;
  std::filesystem::path engine;  ///< engine library; empty for the one below the device root
  std::filesystem::path input;
  std::filesystem::path output;
  PhotoOptions options;
};

/// Throws UserError.
void beautifyPhoto(const BeautyRequest& request);

}  // namespace alg::tool
