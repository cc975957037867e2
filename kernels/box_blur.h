// Box blurs whose radius changes along one side of the image, in time that does not depend on the
// radius and with work memory for 2 x peak + 2 rows, whatever the image's height.
#pragma once

#include <cstdint>

namespace alg {

inline constexpr int kMaxBlurPeak = 24;

/// Radii along one side: `peak` at the first entry, 0 in the middle, and up again to the last.
struct RadiusRamp {
  int peak;     // pixels, 0..kMaxBlurPeak
  int entries;  // with fewer than 2 all radii are 0

  /// 0..peak for any entry: the ramp goes on outside, but never above its peak.
  int radius(int64_t entry) const;
};

enum class RampAxis : uint8_t { kColumns, kRows };

enum class BlurPixels : uint8_t {
  kPackedCrossed,  // 3 bytes; byte k goes to byte 2 - k
  kWords,          // 0xAARRGGBB, in memory B, G, R, A; alpha is ignored, 0 is written
};

struct BoxBlur {
  const uint8_t* src;
  uint8_t* dst;
  int width, height;  // pixels; below 1: nothing is done
  BlurPixels pixels;
  RadiusRamp ramp;
  RampAxis axis = RampAxis::kColumns;
  int firstEntry = 0;  // the ramp's entry for column or row 0
};

// Boxes have the radius r of their own pixel; the outermost pixels are repeated beyond the image. A
// sum over n samples becomes (sum x trunc(65536 / n)) >> 16. When work memory is short, dst stays
// as it is.

/// Across (n = 2r + 1), rounded down to bytes, then down the columns (n = 2r + 1). dst may be src.
void blurSeparable(const BoxBlur& blur);

/// The whole square at once, its centre five times: n = (2r + 1)^2 + 4. Words only, a radius for
/// each column, not in place.
void blurSquare(const BoxBlur& blur);

}  // namespace alg
