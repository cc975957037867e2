// Sizes as users write them.
#pragma once

#include <cstddef>
#include <string>

#include "base/image_size.h"

namespace alg::tool {

struct Size {
  int width;
  int height;

  std::size_t pixels() const { return pixelCount(width, height); }
};

/// Parses "WIDTHxHEIGHT" of a --size option; the ARGB pixels fit into 2^31 - 1 bytes. Throws
/// UserError.
Size parseSize(const std::string& text);

}  // namespace alg::tool
