/// @file
/// Rotation of frames and ARGB images by quarter turns, and blending of images.
///
/// The two families differ on purpose, in what the sizes mean and in the direction of a turn:
///
///     rotateYUV*   take the size of the DESTINATION; 90 turns counter-clockwise
///     rotateARGB*  take the size of the SOURCE;      90 turns clockwise
///
///     source   1 2 3 4      rotateYUV 90   4 8      rotateARGB 90   5 1
///              5 6 7 8                     3 7                      6 2
///                                          2 6                      7 3
///                                          1 5                      8 4
///
/// YUV frames: luma plane of width x height bytes, rows packed, directly followed by the
/// interleaved chroma plane (height / 2 rows of width bytes). Pairs are moved as a unit, so NV12
/// and NV21 rotate alike. ARGB images: 4 bytes a pixel, rows packed, moved unchanged; no alignment
/// is needed.
///
/// Rotations: src and dst are distinct, non-overlapping buffers of the full image; a size below 1
/// does nothing. YUV sizes must be even; with an odd size the chroma of the last row or column is
/// left out.
///
/// Blends treat an image as n bytes, regardless of their meaning (alpha is blended, too), and take
/// them in memory order: buffers may overlap. A size below 1 does nothing.
///
/// All are thread-safe and reentrant; only getBackground and add3ImageByBackground allocate.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

/// Rotations and blends: a class of static functions, never instantiated.
class ALGORITHM_API CameraUtil {
 public:
  CameraUtil() = delete;

  /// @name Rotation of frames
  /// @{

  /// 90 degrees counter-clockwise: dst (y, x) = src (x, height - 1 - y); the source is height
  /// pixels wide and width rows tall.
  /// @param src     frame of width x height x 3 / 2 bytes; only read
  /// @param dst     frame of as many bytes, not overlapping src
  /// @param width   pixels per row of dst, even
  /// @param height  rows of dst, even
  static void rotateYUV90(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 180 degrees: dst (y, x) = src (height - 1 - y, width - 1 - x).
  /// @copydetails rotateYUV90
  static void rotateYUV180(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 90 degrees clockwise: dst (y, x) = src (width - 1 - x, y); the source is height pixels wide
  /// and width rows tall.
  /// @copydetails rotateYUV90
  static void rotateYUV270(const uint8_t* src, uint8_t* dst, int width, int height);
  /// Picks the routine by the angle.
  /// @copydetails rotateYUV90
  /// @param degrees  90, 180 or 270; any other value does nothing
  static void rotateYUV(const uint8_t* src, uint8_t* dst, int width, int height, int degrees);

  /// @}
  /// @name Rotation of ARGB images
  /// @{

  /// 90 degrees clockwise: dst (y, x) = src (height - 1 - x, y); the destination is height pixels
  /// wide and width rows tall.
  /// @param src     image of width x height x 4 bytes; only read
  /// @param dst     image of as many bytes, not overlapping src
  /// @param width   pixels per row of src
  /// @param height  rows of src
  static void rotateARGB90(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 180 degrees: dst (y, x) = src (height - 1 - y, width - 1 - x).
  /// @copydetails rotateARGB90
  static void rotateARGB180(const uint8_t* src, uint8_t* dst, int width, int height);
  /// 90 degrees counter-clockwise: dst (y, x) = src (x, width - 1 - y); the destination is height
  /// pixels wide and width rows tall.
  /// @copydetails rotateARGB90
  static void rotateARGB270(const uint8_t* src, uint8_t* dst, int width, int height);
  /// Picks the routine by the angle.
  /// @copydetails rotateARGB90
  /// @param degrees  90, 180 or 270; any other value does nothing
  static void rotateARGB(const uint8_t* src, uint8_t* dst, int width, int height, int degrees);

  /// @}
  /// @name Blends
  /// @{

  /// dst = (dst x dstWeight + src x srcWeight) / 256, the low 8 bits: weights that add up to more
  /// than 256 may wrap.
  /// @param src        n bytes; read only, except where it overlaps dst
  /// @param srcWeight  share of src in 1/256; only its low 16 bits count
  /// @param dst        n bytes, changed in place
  /// @param dstWeight  share of dst in 1/256; only its low 16 bits count
  /// @param n          bytes, 4 x width x height for ARGB images
  static void add2Image(const uint8_t* src, int srcWeight, uint8_t* dst, unsigned int dstWeight,
                        unsigned int n);
  /// dst = the greater byte of src and dst.
  /// @param src  n bytes; read only, except where it overlaps dst
  /// @param dst  n bytes, changed in place
  /// @param n    bytes, 4 x width x height for ARGB images
  static void add2ImageByBrightness(const uint8_t* src, uint8_t* dst, unsigned int n);
  /// dst = the smaller byte of src and dst.
  /// @copydetails add2ImageByBrightness
  static void add2ImageByDarkness(const uint8_t* src, uint8_t* dst, unsigned int n);
  /// Copies a rectangle of 4-byte pixels from src to the same place in dst, as if column by column.
  /// @param src    image with rows of width pixels
  /// @param dst    image with rows of width pixels; may overlap src
  /// @param width  pixels per row of both images; not checked
  /// @param rect   left, top, right, bottom in pixels, the last two exclusive; NOT clipped to the
  ///               image; only read. An empty one copies nothing
  static void replaceImageContent(const uint8_t* src, uint8_t* dst, int width, int* rect);
  /// For each byte, b or c, whichever is nearer to a; c when they are equally near.
  /// @param a  n bytes of the first image; only read
  /// @param b  n bytes of the second
  /// @param c  n bytes of the third
  /// @param n  bytes
  /// @return n bytes (an empty block for n < 1) from malloc, which the caller frees with free();
  ///         null when memory is short
  static uint8_t* getBackground(const uint8_t* a, const uint8_t* b, const uint8_t* c, int n);
  /// Sets each byte of a to whichever of the three bytes is farthest from their background; of
  /// equally far ones to the first of a, b, c. When memory is short, a stays as it is; memory is
  /// needed only when b or c begins before a and reaches into it.
  /// @param a  n bytes, changed in place
  /// @param b  n bytes
  /// @param c  n bytes
  /// @param n  bytes
  static void add3ImageByBackground(uint8_t* a, const uint8_t* b, const uint8_t* c, int n);

  /// @}
};
