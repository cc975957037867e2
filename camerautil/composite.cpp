// Blending of images as byte arrays, and the copy of a rectangle.
//
// Buffers may overlap: each loop reads and writes in memory order, and what a loop has written is
// what it reads later on. Maximum and minimum are left to the compiler, whose vectors come with
// overlap checks of their own.
#include <cstddef>
#include <cstring>

#include "base/block.h"
#include "base/image_size.h"
#include "camerautil/blend_rows.h"
#include "kernels/overlap.h"
#include "libalgorithm/camera_util.h"

namespace {

int distance(uint8_t a, uint8_t b) { return a > b ? a - b : b - a; }

/// Of a, b and c what is farthest from the background; the first of equally far ones.
uint8_t farthest(uint8_t a, uint8_t b, uint8_t c, uint8_t background) {
  const int da = distance(a, background);
  const int db = distance(b, background);
  const int dc = distance(c, background);
  const uint8_t early = da < db ? b : a;
  return da < dc && db < dc ? c : early;
}

/// A byte offset in 32-bit arithmetic, which wraps.
int32_t pixelOffset(int32_t x, int32_t y, int32_t width) {
  return (y * width + x) * alg::kArgbBytes;
}

/// A pixel is read whole before it is written.
void copyPixel(const uint8_t* src, uint8_t* dst, std::ptrdiff_t offset) {
  uint32_t pixel;
  std::memcpy(&pixel, src + offset, sizeof pixel);
  std::memcpy(dst + offset, &pixel, sizeof pixel);
}

/// Whether the order of the pixels shows in the result: when an offset wraps, or when src and dst
/// overlap within the bytes from the first to the last pixel of the rectangle. `rect` isn't empty.
bool orderMatters(const uint8_t* src, const uint8_t* dst, int width, const int* rect) {
  const int64_t first = int64_t{rect[1]} * width + rect[0];
  const int64_t last = (int64_t{rect[3]} - 1) * width + rect[2] - 1;
  constexpr int64_t kLimit = INT32_MAX / alg::kArgbBytes;  // in pixels
  if (width < 0 || first < -kLimit || last > kLimit) {
    return true;
  }
  const std::ptrdiff_t begin = first * alg::kArgbBytes;
  const auto bytes = static_cast<std::size_t>((last - first + 1) * alg::kArgbBytes);
  return alg::overlap(src + begin, bytes, dst + begin, bytes);
}

}  // namespace

void CameraUtil::add2Image(const uint8_t* src, int srcWeight, uint8_t* dst, unsigned int dstWeight,
                           unsigned int n) {
  // Bits 8 to 15 of the sum are stored; they depend on the low 16 bits of the weights alone.
  const auto srcShare = static_cast<uint16_t>(srcWeight);
  const auto dstShare = static_cast<uint16_t>(dstWeight);
  (alg::feedsBack(src, dst, n) ? alg::addSharesPlain : alg::addShares)(src, srcShare, dst, dstShare,
                                                                       n);
}

void CameraUtil::add2ImageByBrightness(const uint8_t* src, uint8_t* dst, unsigned int n) {
  for (std::size_t i = 0; i < n; ++i) {
    dst[i] = dst[i] < src[i] ? src[i] : dst[i];
  }
}

void CameraUtil::add2ImageByDarkness(const uint8_t* src, uint8_t* dst, unsigned int n) {
  for (std::size_t i = 0; i < n; ++i) {
    dst[i] = dst[i] > src[i] ? src[i] : dst[i];
  }
}

void CameraUtil::replaceImageContent(const uint8_t* src, uint8_t* dst, int width, int* rect) {
  const int left = rect[0];
  const int top = rect[1];
  const int right = rect[2];
  const int bottom = rect[3];
  if (left >= right || top >= bottom) {
    return;
  }
  if (orderMatters(src, dst, width, rect)) {
    for (int x = left; x < right; ++x) {
      for (int y = top; y < bottom; ++y) {
        copyPixel(src, dst, pixelOffset(x, y, width));
      }
    }
    return;
  }
  const auto rowBytes = static_cast<std::size_t>(int64_t{right} - left) * alg::kArgbBytes;
  for (int y = top; y < bottom; ++y) {
    const std::ptrdiff_t offset = pixelOffset(left, y, width);
    std::memcpy(dst + offset, src + offset, rowBytes);
  }
}

uint8_t* CameraUtil::getBackground(const uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  const std::size_t size = n > 0 ? static_cast<std::size_t>(n) : 0;
  alg::Block background = alg::allocateBlock(size);
  if (background == nullptr) {
    return nullptr;
  }
  alg::takeNearer(a, b, c, background.get(), size);
  return background.release();
}

void CameraUtil::add3ImageByBackground(uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  const std::size_t size = n > 0 ? static_cast<std::size_t>(n) : 0;
  if (!alg::feedsBack(b, a, size) && !alg::feedsBack(c, a, size)) {
    return alg::takeFarthest(a, b, c, size);
  }
  // Here b or c read what a has become, but the background is that of the images before.
  const alg::Block background(getBackground(a, b, c, n));
  if (background == nullptr) {
    return;
  }
  for (std::size_t i = 0; i < size; ++i) {
    a[i] = farthest(a[i], b[i], c[i], background[i]);
  }
}
