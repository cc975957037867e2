// A warmer colour temperature for packed 3-byte pixels, and the two maximum functions.
#include "catalogue/operations.h"
#include "kernels/curve_map.h"
#include "libalgorithm/pretty_filters.h"

namespace {

// With s(v) = ((255 - v) x v x gain) >> 15, the channels become v - s(v) or v + s(v). Pixels whose
// greatest value exceeds 255 would be scaled down after that; none does, so that each byte depends
// on its own channel alone:
//   s(v) <= (255 - v) x (255 x 116 / 32768) < 255 - v for v < 255, and s(255) = 0, so v + s(v) is
//   at most 255; likewise s(v) <= v x (255 x 116 / 32768) <= v, so v - s(v) is at least 0.
// Such values pass through float and back unchanged.
constexpr int kRedBlueGain = 116;
constexpr int kGreenGain = 29;

/// Largest in the middle (57 levels at a gain of 116), 0 at both ends.
int shift(int v, int gain) { return ((255 - v) * v * gain) >> 15; }

uint8_t lowered(int v) { return static_cast<uint8_t>(v - shift(v, kRedBlueGain)); }
uint8_t raised(int v) { return static_cast<uint8_t>(v + shift(v, kRedBlueGain)); }
uint8_t raisedGreen(int v) { return static_cast<uint8_t>(v + shift(v, kGreenGain)); }

}  // namespace

void Temperature(unsigned char* src, unsigned char* dst, int width, int height) {
  static const alg::Curves kCurves = alg::makeCurves(lowered, raisedGreen, raised);
  alg::mapCurves(src, dst, width, height, kCurves);
}

float maxf(float a, float b) { return a > b ? a : b; }

int max(int a, int b) { return a >= b ? a : b; }

namespace alg::operation {

constinit const Operation kTemperature{
    .name = "temperature",
    .routine = "Temperature",
    .family = Family::kTone,
    .shows = "Warmer: more red, less blue.",
    .formula =
        "v +- 116 v (255 - v) / 32768, green a quarter of that: up to 57 levels in the middle, "
        "none at the ends.",
    .pixels = Pixels::kPackedBgr,
    .pipeline = {.name = "temperature", .identifier = 3},
    .run = runPlain<Temperature>,
};

}  // namespace alg::operation
