// The page of the gallery.
#pragma once

#include <string_view>

namespace alg::tool {

/// gallery_page.html as it stands in the source tree (embedded by embed_text.cmake).
extern const std::string_view kGalleryPage;
/// gallery_index.html: the page of a folder.
extern const std::string_view kGalleryIndex;

}  // namespace alg::tool
