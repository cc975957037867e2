// Photos at another size, through a filter that covers what a new pixel stands for.
#pragma once

#include "tools/photos/photo.h"

namespace alg::tool {

/// A part of a photo, in pixels and fractions of them.
struct Area {
  double x, y, width, height;
};

/// Resamples a part of a photo with Lanczos's kernel of three lobes, widened when the photo
/// shrinks, so that nothing aliases. Throws std::bad_alloc.
Photo resample(const Photo& photo, const Area& area, int width, int height);

}  // namespace alg::tool
