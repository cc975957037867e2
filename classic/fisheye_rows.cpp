// The definition of the fish-eye.
#include "classic/fisheye_rows.h"

#include <cstddef>

#include "classic/four_corner.h"

namespace alg {
namespace {

/// Where a run of pixels comes from.
struct SourceRun {
  int y[kCornerRun];
  int x[kCornerRun];
};

void locate(const FisheyeMap& map, SourceRun& run, int dy, int dx, int count) {
  const int offsetY = map.offsetY(dy);
  const int lengthY = map.lengthY(offsetY);
  for (int i = 0; i < count; ++i) {
    const int offsetX = map.offsetX(dx + i);
    const int lengthX = map.lengthX(offsetX);
    const int factor = stretch((lengthY * lengthY + lengthX * lengthX) >> 12, map.lens);
    run.y[i] = position(factor, offsetY, map.height);
    run.x[i] = position(factor, offsetX, map.width);
  }
}

}  // namespace

void fisheyePlain(const FisheyeMap& map, const uint8_t* src, uint8_t* dst) {
  const Mirrors mirrors(map.width, map.height);
  SourceRun run;
  walkFourCorners(
      map.width, map.height, [&](int dy, int dx, int count) { locate(map, run, dy, dx, count); },
      [&](int i, const Corners& to) {
        const int y = run.y[i];
        const int x = run.x[i];
        // Only images of a million pixels and more on a side have sources outside.
        if (y < 0 || y >= map.height || x < 0 || x >= map.width) {
          return;
        }
        const Corners from = mirrors.of(y, x);
        for (std::size_t corner = 0; corner < to.size(); ++corner) {
          const uint8_t* pixel = src + from[corner];
          uint8_t* out = dst + to[corner];
          out[0] = pixel[2];
          out[1] = pixel[1];
          out[2] = pixel[0];
        }
      });
}

}  // namespace alg
