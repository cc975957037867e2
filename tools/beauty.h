// camera-effects beauty: the face-beauty engine on a photo.
#pragma once

#include <filesystem>

namespace alg::tool {

struct BeautyRequest {
  int smooth;
  int toning;
  int slimming;
  std::filesystem::path engine;  ///< engine library; empty for the one below the device root
  std::filesystem::path input;
  std::filesystem::path output;
  int quality;
};

/// Throws UserError.
void beautifyPhoto(const BeautyRequest& request);

}  // namespace alg::tool
