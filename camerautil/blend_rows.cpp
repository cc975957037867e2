// The definitions of the byte-wise blends' row kernels.
#include "camerautil/blend_rows.h"

namespace alg {
namespace {

// In bytes, not ints, so that vectors hold four times as many.
uint8_t distance(uint8_t a, uint8_t b) { return static_cast<uint8_t>(a > b ? a - b : b - a); }

}  // namespace

void addSharesPlain(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
                    std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const auto sum = static_cast<uint16_t>(dst[i] * dstShare + src[i] * srcShare);
    dst[i] = static_cast<uint8_t>(sum >> 8);
  }
}

void takeGreaterPlain(const uint8_t* src, uint8_t* dst, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    dst[i] = dst[i] < src[i] ? src[i] : dst[i];
  }
}

void takeLesserPlain(const uint8_t* src, uint8_t* dst, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    dst[i] = dst[i] > src[i] ? src[i] : dst[i];
  }
}

void takeNearerPlain(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out,
                     std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    out[i] = distance(b[i], a[i]) < distance(c[i], a[i]) ? b[i] : c[i];
  }
}

void takeFarthestPlain(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const bool isB = distance(b[i], a[i]) < distance(c[i], a[i]);  // the background
    const uint8_t background = isB ? b[i] : c[i];
    const uint8_t other = isB ? c[i] : b[i];
    a[i] = distance(a[i], background) < distance(other, background) ? other : a[i];
  }
}

}  // namespace alg
