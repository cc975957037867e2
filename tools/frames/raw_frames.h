// camera-effects convert and rotate: files that hold one frame and nothing else.
#pragma once

#include <filesystem>
#include <string>

#include "tools/photos/photo_options.h"

namespace alg::tool {

/// Formats by name: "nv12" and "nv21" (luma plane, then U,V or V,U pairs), "argb" (B, G, R, A
/// bytes), and "jpg" on one side. `size` is "WIDTHxHEIGHT", both even; empty for a photo.
struct ConvertRequest {
  std::string size;
  std::string from;
  std::string to;
  std::filesystem::path input;
  std::filesystem::path output;
  PhotoOptions options;
};

/// Throws UserError. nv12 to nv21 and back exchanges the chroma bytes and loses nothing. For a
/// photo, the size of its frame is printed.
void convertFrame(const ConvertRequest& request);

struct RotateRequest {
  std::string size;    ///< of the input
  std::string format;  ///< "nv12" or "nv21": for messages, both rotate alike
  int degrees = 90;    ///< 90, 180 or 270, counter-clockwise
  std::filesystem::path input;
  std::filesystem::path output;
};

/// Throws UserError.
void rotateFrame(const RotateRequest& request);

}  // namespace alg::tool
