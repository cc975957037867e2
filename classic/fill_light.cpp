// A fill light in the middle of the picture.
#include "classic/light_rows.h"
#include "libalgorithm/classic_effects.h"

void FillLightFix(unsigned char* src, unsigned char* dst, float radius, int width, int height) {
  if (width >= 1 && height >= 1) {
    alg::fillLight(alg::FillLight(radius, width, height), src, dst);
  }
}
