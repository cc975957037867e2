// The page of the gallery.
#pragma once

#include <string_view>

namespace alg::tool {

/// gallery_page.html as it stands in the source tree (embedded by embed_text.cmake).
extern const std::string_view kGalleryPage;

}  // namespace alg::tool
