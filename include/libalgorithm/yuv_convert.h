/// @file
/// Conversion between semi-planar YUV 4:2:0 frames and ARGB images or packed 3-byte pixels.
///
/// Arithmetic: BT.601 video range (luma 16..235, chroma 16..240) in 16.16 fixed point, truncated,
/// never rounded. The exact factors are contract: 76310 = 1.164, 104595 = 1.596, 53281 = 0.813,
/// 25677 = 0.392, 132199 = 2.017 (decoding); 16830/33036/6416 and 28783/24104/19071/9712/4679
/// (encoding), all times 65536.
///
///     ARGB image      width x height 32-bit words 0xAARRGGBB, rows packed; in memory B, G, R, A.
///                     Decoders write alpha 0xFF, encoders ignore alpha.
///     luma plane      height rows of yStride bytes, one byte a pixel
///     chroma plane    one byte pair for each 2 x 2 block: U,V ("YUV", NV12) or V,U ("YVU", NV21)
///
///       luma  Y00 Y01 | Y02 Y03        chroma (NV12)   U0 V0 | U1 V1
///             Y10 Y11 | Y12 Y13        chroma (NV21)   V0 U0 | V1 U1
///
/// Encoders take a block's chroma from its bottom-left pixel alone; nothing is averaged.
///
/// The chroma plane is walked with one cursor over the whole image, a pair per block. After each
/// pair the offset of its second byte, modulo uvStride, is compared with the width; when it is at
/// least the width (decoders) or greater than the width (encoders) the cursor skips uvStride -
/// width bytes. With uvStride equal to the width the plane is simply contiguous. With a larger
/// uvStride the cursor does NOT land on the start of the next chroma row: callers with padded
/// chroma must not use these routines.
///
/// All routines: source and destination must not overlap. Width and height must be even and
/// positive and strides positive; a size below 1 does nothing. With an odd size nothing outside the
/// image is read or written: the chroma plane counts as floor(height x uvStride / 2) bytes, a
/// missing bottom row repeats the last one, and a chroma sample beyond the plane repeats the one a
/// packed block row above (decoders; 128 when there is none) or is left out (encoders). Thread-safe
/// and reentrant; no allocation.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

extern "C" {

/// @name ARGB images
/// @{

/// Decodes U,V ordered (NV12) chroma into an ARGB image.
/// @param argb      destination, width x height words
/// @param luma      source luma plane
/// @param chroma    source chroma plane, floor(height x uvStride / 2) bytes
/// @param width     pixels, even
/// @param height    rows, even
/// @param yStride   bytes from one luma row to the next, at least the width
/// @param uvStride  bytes of a chroma row, the width; see the cursor rule above for others
ALGORITHM_API void decodeYUV2ARGB_LUT(uint32_t* argb, const uint8_t* luma, const uint8_t* chroma,
                                      int width, int height, int yStride, int uvStride);

/// Decodes V,U ordered (NV21) chroma into an ARGB image.
/// @copydetails decodeYUV2ARGB_LUT
ALGORITHM_API void decodeYVU2ARGB_OpenGL(uint32_t* argb, const uint8_t* luma, const uint8_t* chroma,
                                         int width, int height, int yStride, int uvStride);

/// Encodes an ARGB image into luma and U,V ordered (NV12) chroma.
/// Black gives Y 16, white Y 234 (truncation), both U = V = 128.
/// @param argb      source, width x height words
/// @param luma      destination luma plane; bytes between rows are not written
/// @param chroma    destination chroma plane, floor(height x uvStride / 2) bytes
/// @param width     pixels, even
/// @param height    rows, even
/// @param yStride   bytes from one luma row to the next, at least the width
/// @param uvStride  bytes of a chroma row, the width; see the cursor rule above for others
ALGORITHM_API void decodeARGB2YUV_OpenGL(const uint32_t* argb, uint8_t* luma, uint8_t* chroma,
                                         int width, int height, int yStride, int uvStride);

/// Encodes an ARGB image into luma and V,U ordered (NV21) chroma.
/// @copydetails decodeARGB2YUV_OpenGL
ALGORITHM_API void decodeARGB2YVU_OpenGL(const uint32_t* argb, uint8_t* luma, uint8_t* chroma,
                                         int width, int height, int yStride, int uvStride);

/// @}
/// @name Pixels through a callback
/// @{

/// Stores the red, green and blue value of the pixel `index` (row x width + column). Any int is
/// accepted; the results are clamped.
using PixelFetchFunc = void (*)(void* context, int index, int* red, int* green, int* blue);

/// Encodes pixels pulled through a callback into three planes. Values are computed in wrapping
/// 32-bit ints, then clamped to 0..255. Sizes must be even; with an odd one the callback is called
/// for the nearest pixel inside and each chroma plane ends after (width x height) / 4 samples.
/// @param context  passed to the callback unchanged
/// @param fetch    called once per pixel, per 2 x 2 block in the order top-left, top-right,
///                 bottom-right, bottom-left, on the calling thread
/// @param y        luma plane, height rows of yStride bytes
/// @param u        U plane, rows of ceil(width / 2) bytes; the V plane of the same shape starts
///                 (width x height) / 4 bytes after it
/// @param width    pixels, even
/// @param height   rows, even
/// @param yStride  bytes from one luma row to the next, at least the width
ALGORITHM_API void decodeARGB2YUV420P(void* context, PixelFetchFunc fetch, uint8_t* y, uint8_t* u,
                                      int width, int height, int yStride);

/// @}

}  // extern "C"

/// @name Strip converters
/// The two ends of the effect pipeline. They differ on purpose in the byte order of the packed
/// 3-byte pixels (row pitch 3 x width):
///
///     decodeYUV2ARGB_jni writes  B G R     every effect in between writes its pixels crossed
///     decodeARGB2YUV_jni reads   R G B     (bytes 0 and 2 exchanged), which cancels that out
///
/// A strip is an image of its own: it must start on an even frame row and should have an even
/// number of rows.
/// @{

/// Decodes U,V ordered chroma to packed B, G, R pixels.
/// @param rgbOut    destination, 3 x width x height bytes, rows packed
/// @param y         the strip's first luma row; only read
/// @param uv        the strip's first chroma row; only read
/// @param width     pixels, even
/// @param height    rows of the strip, even
/// @param yStride   bytes from one luma row to the next
/// @param uvStride  bytes of a chroma row, the width; see the cursor rule above for others
ALGORITHM_API void decodeYUV2ARGB_jni(uint8_t* rgbOut, uint8_t* y, uint8_t* uv, int width,
                                      int height, int yStride, int uvStride);

/// Encodes packed R, G, B pixels to luma and U,V ordered chroma.
/// @param rgbIn     source, 3 x width x height bytes, rows packed; only read
/// @param y         the strip's first luma row
/// @param uv        the strip's first chroma row
/// @param width     pixels, even
/// @param height    rows of the strip, even
/// @param yStride   bytes from one luma row to the next
/// @param uvStride  bytes of a chroma row, the width; see the cursor rule above for others
ALGORITHM_API void decodeARGB2YUV_jni(uint8_t* rgbIn, uint8_t* y, uint8_t* uv, int width,
                                      int height, int yStride, int uvStride);

/// Strip callback (ThreadPoolTaskFunc): decodes as decodeYUV2ARGB_jni() does.
/// @param input   a YuvStripDesc, whose sizes and strides are used
/// @param param   ignored
/// @param output  an RgbStripDesc, of which only the pixels are used
ALGORITHM_API void YUV2RGB(const void* input, const void* param, void* output);

/// Strip callback (ThreadPoolTaskFunc): encodes as decodeARGB2YUV_jni() does.
/// @param input   an RgbStripDesc, whose pixels, sizes and strides are used
/// @param param   ignored
/// @param output  a YuvStripDesc, of which only the planes are used
ALGORITHM_API void RGB2YUV(const void* input, const void* param, void* output);

/// @}
