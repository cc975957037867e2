// camera-effects gallery: one photo under every effect, as a page.
#pragma once

#include <filesystem>

namespace alg::tool {

/// Makes `folder` with index.html and pictures/. An existing folder is replaced when it is empty or
/// holds nothing but an earlier gallery. Throws UserError.
void makeGallery(const std::filesystem::path& photo, const std::filesystem::path& folder,
                 int quality);

}  // namespace alg::tool
