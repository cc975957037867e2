// camera-effects gallery: one photo under every effect, as a page.
#pragma once

#include <filesystem>

#include "tools/photo_options.h"

namespace alg::tool {

struct GalleryRequest {
  std::filesystem::path photo;
  std::filesystem::path folder;
  PhotoOptions options;
};

/// Makes the folder with index.html and pictures/. An existing one is replaced when it is empty or
/// holds nothing but an earlier gallery. Throws UserError.
void makeGallery(const GalleryRequest& request);

}  // namespace alg::tool
