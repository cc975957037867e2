// Soft-light blending of packed 3-byte pixels with an overlay picture.
#pragma once

#include <cstdint>

namespace alg {

/// An overlay picture: 4 bytes a pixel (R, G, B, A; alpha is not read), rows packed.
struct Overlay {
  const uint8_t* pixels;
  int width;
  int height;
};

/// c blended with o: unchanged at o = 128, lighter above, darker below; stays within 0..255.
uint8_t softLight(uint8_t c, uint8_t o);

/// A soft-light effect: a curve before the blend for each source byte, one after it for all.
struct SoftLightCurves {
  uint8_t before[3][256];
  uint8_t after[256];
};

/// Maps each source byte k through before[k], blends it with byte k of the overlay pixel that lies
/// nearest when the overlay is stretched over width x height, maps it through `after` and stores it
/// crossed, at byte 2 - k. Pixels go in memory order, each read whole before it is written. Does
/// nothing when a size of the frame or the overlay is below 1.
void blendSoftLight(const uint8_t* src, uint8_t* dst, int width, int height, const Overlay& overlay,
                    const SoftLightCurves& curves);

}  // namespace alg
