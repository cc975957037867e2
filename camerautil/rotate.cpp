// Rotation by quarter turns. Both families use the same three element walks; they differ in what
// their sizes mean and in the direction of a turn.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/image_size.h"
#include "libalgorithm/camera_util.h"

namespace {

enum class Turn { kCounterClockwise, kHalf, kClockwise };

/// Rows of fixed-size elements; the pitch is in bytes.
template <class Byte>
struct Rows {
  Byte* first;
  std::size_t pitch;
  Byte* row(int index) const { return first + pitch * static_cast<std::size_t>(index); }
};

// Side of the square tiles that quarter turns go through, so that the source rows of a tile stay in
// the cache while its destination rows are written.
constexpr int kTile = 32;

/// Fills a width x height destination of kSize-byte elements; each moves whole.
template <Turn kTurn, std::size_t kSize>
void rotate(Rows<const uint8_t> src, Rows<uint8_t> dst, int width, int height) {
  const auto source = [&](int y, int x) -> const uint8_t* {
    if constexpr (kTurn == Turn::kCounterClockwise) {
      return src.row(x) + kSize * static_cast<std::size_t>(height - 1 - y);
    } else if constexpr (kTurn == Turn::kHalf) {
      return src.row(height - 1 - y) + kSize * static_cast<std::size_t>(width - 1 - x);
    } else {
      return src.row(width - 1 - x) + kSize * static_cast<std::size_t>(y);
    }
  };
  for (int top = 0; top < height; top += kTile) {
    for (int left = 0; left < width; left += kTile) {
      const int right = std::min(left + kTile, width);
      for (int y = top; y < std::min(top + kTile, height); ++y) {
        uint8_t* to = dst.row(y) + kSize * static_cast<std::size_t>(left);
        for (int x = left; x < right; ++x, to += kSize) {
          std::memcpy(to, source(y, x), kSize);
        }
      }
    }
  }
}

template <Turn kTurn>
void rotateFrame(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const auto dstPitch = static_cast<std::size_t>(width);
  const auto srcPitch = static_cast<std::size_t>(kTurn == Turn::kHalf ? width : height);
  const std::size_t lumaBytes = dstPitch * static_cast<std::size_t>(height);
  rotate<kTurn, 1>({src, srcPitch}, {dst, dstPitch}, width, height);
  rotate<kTurn, 2>({src + lumaBytes, srcPitch}, {dst + lumaBytes, dstPitch}, width / 2, height / 2);
}

template <Turn kTurn>
void rotateImage(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const int dstWidth = kTurn == Turn::kHalf ? width : height;
  const int dstHeight = kTurn == Turn::kHalf ? height : width;
  rotate<kTurn, alg::kArgbBytes>({src, alg::kArgbBytes * static_cast<std::size_t>(width)},
                                 {dst, alg::kArgbBytes * static_cast<std::size_t>(dstWidth)},
                                 dstWidth, dstHeight);
}

}  // namespace

void CameraUtil::rotateYUV90(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame<Turn::kCounterClockwise>(src, dst, width, height);
}

void CameraUtil::rotateYUV180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame<Turn::kHalf>(src, dst, width, height);
}

void CameraUtil::rotateYUV270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame<Turn::kClockwise>(src, dst, width, height);
}

void CameraUtil::rotateYUV(const uint8_t* src, uint8_t* dst, int width, int height, int degrees) {
  switch (degrees) {
    case 180:
      return rotateYUV180(src, dst, width, height);
    case 270:
      return rotateYUV270(src, dst, width, height);
    case 90:
      return rotateYUV90(src, dst, width, height);
    default:
      return;
  }
}

void CameraUtil::rotateARGB90(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage<Turn::kClockwise>(src, dst, width, height);
}

void CameraUtil::rotateARGB180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage<Turn::kHalf>(src, dst, width, height);
}

void CameraUtil::rotateARGB270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage<Turn::kCounterClockwise>(src, dst, width, height);
}

void CameraUtil::rotateARGB(const uint8_t* src, uint8_t* dst, int width, int height, int degrees) {
  switch (degrees) {
    case 180:
      return rotateARGB180(src, dst, width, height);
    case 270:
      return rotateARGB270(src, dst, width, height);
    case 90:
      return rotateARGB90(src, dst, width, height);
    default:
      return;
  }
}
