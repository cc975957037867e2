// Rotation of frames and ARGB images by quarter turns, and blending of images.
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
// Rotations: src and dst are distinct, non-overlapping buffers of the full image; a size below 1
// does nothing. YUV sizes must be even; with an odd size the chroma of the last row or column is
// left out.
//
// Blends take images as n bytes each, whatever they mean (alpha is blended, too), in memory order:
// buffers may overlap. A size below 1 does nothing.
//
// All are thread-safe and reentrant; only getBackground and add3ImageByBackground allocate.
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

  /// dst = (dst x dstWeight + src x srcWeight) / 256, the low 8 bits: weights that add up to more
  /// than 256 may wrap.
  static void add2Image(const uint8_t* src, int srcWeight, uint8_t* dst, unsigned int dstWeight,
                        unsigned int n);
  /// dst = the greater byte of src and dst.
  static void add2ImageByBrightness(const uint8_t* src, uint8_t* dst, unsigned int n);
  /// dst = the smaller byte of src and dst.
  static void add2ImageByDarkness(const uint8_t* src, uint8_t* dst, unsigned int n);
  /// Copies a rectangle of 4-byte pixels from src to the same place in dst, as if column by column.
  /// @param width  pixels per row of both images; not checked
  /// @param rect   left, top, right, bottom, the last two exclusive; NOT clipped to the image
  static void replaceImageContent(const uint8_t* src, uint8_t* dst, int width, int* rect);
  /// At each byte b or c, whichever is nearer to a; c when they are equally near.
  /// @return n bytes (a block of none for n < 1) from malloc, which the caller frees; null when
  /// memory is short
  static uint8_t* getBackground(const uint8_t* a, const uint8_t* b, const uint8_t* c, int n);
  /// Keeps in a, at each byte, what is farthest from the background of the three; of equally far
  /// ones the first of a, b, c. When memory is short, a stays as it is; memory is only needed when
  /// b or c begins before a and reaches into it.
  static void add3ImageByBackground(uint8_t* a, const uint8_t* b, const uint8_t* c, int n);
};
