// Rotation by quarter turns. Both families use the same walk over a grid of elements; they differ
// in what their sizes mean and in the direction of a turn.
#include <cstddef>

#include "base/image_size.h"
#include "camerautil/turn_rows.h"
#include "libalgorithm/camera_util.h"

namespace {

using alg::Rows;

enum class Turn { kCounterClockwise, kHalf, kClockwise };

template <class Byte>
Rows<Byte> upwards(Rows<Byte> rows, int height) {
  return {rows.row(height - 1), -rows.pitch};
}

/// Fills a width x height destination of elements; each moves whole. A quarter turn is a transpose
/// that reads or writes its rows from the last to the first:
///
///   source   1 2 3   transposed  1 4   destination upwards  3 6   source upwards  4 1
///            4 5 6               2 5   (counterclockwise)   2 5   (clockwise)     5 2
///                                3 6                        1 4                   6 3
void rotate(Turn turn, std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
            int width, int height) {
  switch (turn) {
    case Turn::kCounterClockwise:
      return alg::transpose(elementBytes, src, upwards(dst, height), height, width);
    case Turn::kClockwise:
      return alg::transpose(elementBytes, upwards(src, width), dst, height, width);
    case Turn::kHalf:
      for (int y = 0; y < height; ++y) {
        alg::mirror(elementBytes, src.row(height - 1 - y), dst.row(y),
                    static_cast<std::size_t>(width));
      }
  }
}

void rotateFrame(Turn turn, const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const std::ptrdiff_t dstPitch = width;
  const std::ptrdiff_t srcPitch = turn == Turn::kHalf ? width : height;
  const std::ptrdiff_t lumaBytes = dstPitch * height;
  rotate(turn, 1, {src, srcPitch}, {dst, dstPitch}, width, height);
  rotate(turn, 2, {src + lumaBytes, srcPitch}, {dst + lumaBytes, dstPitch}, width / 2, height / 2);
}

void rotateImage(Turn turn, const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  constexpr std::ptrdiff_t kBytes = alg::kArgbBytes;
  const int dstWidth = turn == Turn::kHalf ? width : height;
  const int dstHeight = turn == Turn::kHalf ? height : width;
  rotate(turn, kBytes, {src, kBytes * width}, {dst, kBytes * dstWidth}, dstWidth, dstHeight);
}

}  // namespace

void CameraUtil::rotateYUV90(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kCounterClockwise, src, dst, width, height);
}

void CameraUtil::rotateYUV180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kHalf, src, dst, width, height);
}

void CameraUtil::rotateYUV270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kClockwise, src, dst, width, height);
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
  rotateImage(Turn::kClockwise, src, dst, width, height);
}

void CameraUtil::rotateARGB180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage(Turn::kHalf, src, dst, width, height);
}

void CameraUtil::rotateARGB270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage(Turn::kCounterClockwise, src, dst, width, height);
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
