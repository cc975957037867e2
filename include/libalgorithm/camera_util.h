// Rotation of frames and ARGB images by quarter turns.
//
// The two families differ on purpose, in what the sizes mean and in the direction of a turn:
//
//   rotateYUV*   take the size of the DESTINATION; 90 turns counter-clockwise
//   rotateARGB*  take the size of the SOURCE;      90 turns clockwise
//
//   source   1 2 3 4      rotateYUV 90   4 8      rotateARGB 90   5 1
//            5 6 7 8                     3 7                      6 2
//                                        2 6                      7 3
//                                        1 5                      8 4
//
// YUV frames: luma plane of width x height bytes, rows packed, directly followed by the interleaved
// chroma plane (height / 2 rows of width bytes). Pairs move whole, so NV12 and NV21 rotate alike.
// ARGB images: width x height 32-bit words, rows packed, moved unchanged.
//
// All routines: src and dst are distinct, non-overlapping buffers of the full image; a size below 1
// does nothing. YUV sizes must be even; with an odd size the chroma of the last row or column is
// left out. Thread-safe and reentrant; no allocation.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

class ALGORITHM_API CameraUtil {
 public:
  CameraUtil() = delete;

  /// 90 degrees counter-clockwise: dst (y, x) = src (x, height - 1 - y). The source is
  /// height pixels wide and width rows tall.
  static void rotateYUV90(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 180 degrees.
  static void rotateYUV180(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 90 degrees clockwise: dst (y, x) = src (width - 1 - x, y). The source is height pixels wide
  /// and width rows tall.
  static void rotateYUV270(const uint8_t* src, uint8_t* dst, int width, int height);
  /// Picks the routine for 90, 180 or 270 degrees; any other value does nothing.
  static void rotateYUV(const uint8_t* src, uint8_t* dst, int width, int height, int degrees);

  /// 90 degrees clockwise: dst (y, x) = src (height - 1 - x, y). The destination is height pixels
  /// wide and width rows tall.
  static void rotateARGB90(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 180 degrees.
  static void rotateARGB180(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 90 degrees counter-clockwise: dst (y, x) = src (x, width - 1 - y).
  static void rotateARGB270(const uint8_t* src, uint8_t* dst, int width, int height);
  /// Picks the routine for 90, 180 or 270 degrees; any other value does nothing.
  static void rotateARGB(const uint8_t* src, uint8_t* dst, int width, int height, int degrees);
};
