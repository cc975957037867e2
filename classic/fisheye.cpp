// The fish-eye.
#include "classic/fisheye_rows.h"
#include "libalgorithm/classic_effects.h"

void Fisheye(unsigned char* src, unsigned char* dst, float /*strength*/, int width, int height) {
  if (width >= 1 && height >= 1) {
    alg::fisheye(alg::FisheyeMap(width, height), src, dst);
  }
}
