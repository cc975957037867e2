// camera-effects gallery: photos under every effect, as pages.
#pragma once

#include <filesystem>

#include "tools/photos/photo_options.h"

namespace alg::tool {

struct GalleryRequest {
  std::filesystem::path photo;
  std::filesystem::path folder;
  PhotoOptions options;
};

/// Makes the folder with index.html and pictures/; of a folder of photos, with an index.html of all
/// and such a folder for each in photos/. Returns whether every photo could be drawn. An existing
/// one is replaced when it is empty or holds nothing but an earlier gallery. Throws UserError.
bool makeGallery(const GalleryRequest& request);

}  // namespace alg::tool
