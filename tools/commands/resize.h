// camera-effects resize: photos to another size.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "tools/photos/photo_options.h"

namespace alg::tool {

struct ResizeRequest {
  /// "WIDTHxHEIGHT"; "400", the longer side; "400x", a width; "x300", a height; "50%".
  std::string size;
  enum class Shape : uint8_t { kStretch, kFit, kCrop };
  Shape shape = Shape::kStretch;   ///< of a photo that has another shape than WIDTHxHEIGHT
  std::string filter = "lanczos";  ///< or "bilinear", the library's Resize
  std::filesystem::path input;
  std::filesystem::path output;
  PhotoOptions options;
};

/// Throws UserError.
void resizePhoto(const ResizeRequest& request);

}  // namespace alg::tool
