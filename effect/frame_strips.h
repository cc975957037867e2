// Frames, and the records of their strips.
#pragma once

#include <cstdint>

#include "effect/strip_split.h"
#include "libalgorithm/effect_pipeline.h"

namespace alg {

/// An NV21 frame in memory, with its strides in bytes.
struct Frame {
  uint8_t* y;
  uint8_t* uv;
  int width;
  int height;
  int yStride;
  int uvStride;
};

/// The road works in that many strips; effects have them or one.
inline constexpr int kStrips = 4;

/// The part of a frame that a strip covers.
YuvStripDesc yuvStrip(const Frame& frame, const Strip& strip);

/// The part of a strip of a packed image whose first row is at `pixels`. It has no effect yet.
RgbStripDesc rgbStrip(const Frame& frame, const Strip& strip, uint8_t* pixels);

/// Gives strip `index` its effect, with its band of the overlay: equal bands of whole rows,
/// whatever the frame's cut.
void addEffect(RgbStripDesc& desc, const EffectTypeInfo& effect, int index);

}  // namespace alg
