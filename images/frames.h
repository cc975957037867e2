// Frames to and from images, both in any layout.
#pragma once

#include "images/image.h"

namespace alg {

/// Decodes to an image of the frame's size; alpha becomes 255.
void decodeToImage(const FrameImage& frame, const Image& image);

/// Encodes an image of the frame's size; alpha is ignored, chroma comes from the lower left pixel
/// of each block.
void encodeFromImage(const Image& image, const FrameImage& frame);

}  // namespace alg
