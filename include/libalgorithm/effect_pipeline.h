/// @file
/// The effect pipeline: one NV21 frame through conversion, a named effect and conversion back, in
/// place, in strips on the process-wide pool.
///
///     frame (NV21) --YUV2RGB--> gCLAHE_Rgb_Buffer_in --EffectFunction--> gCLAHE_Rgb_Buffer_out
///          ^                        (4 strips)             (1 or 4 strips)        |
///          +---------------------------- RGB2YUV (4 strips) ---------------------+
///
/// Frames with even sizes and chroma rows without gaps take the three steps a few rows at a time
/// within each of four strips, with the same result, and leave the work images untouched.
///
/// KAVRO_PrettyEffect_Function() runs the whole pipeline and is the one to call; the other names
/// are its parts.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

/// What an effect name stands for.
struct EffectTypeInfo {
  uint8_t* overlay;       ///< overlay picture: R, G, B, A bytes, rows packed; null for a name
                          ///< without one. Valid until the next call that decodes a picture, and
                          ///< not to be written to: it may be used again. When
                          ///< "newsketch_effect" lacks its own, the picture decoded last, if any
                          ///< (except one of over 32 MB, which a run has freed).
  int32_t overlayWidth;   ///< pixels
  int32_t overlayHeight;  ///< rows
  int32_t effectId;    ///< the name's identifier, from 0 on; 1000 for an unknown name or a missing
                       ///< picture
  int32_t stripCount;  ///< 1 or 4
  int32_t effectFlag;  ///< -1 for "miniature" on a landscape frame, else 0
};

/// Looks an effect name up (exact, case-sensitive) and decodes its overlay picture, if it has one,
/// from "/data/data/com.android.camera/effect/" (a file that has not changed since an earlier call
/// is not decoded again). Landscape frames (width > height) may have a picture of their own. A
/// picture of fewer rows than the effect has strips counts as missing. Not reentrant: all pictures
/// share one process-wide bitmap.
/// @param name    not null
/// @param width   pixels of the frame
/// @param height  rows of the frame
/// @return by value; an unknown name has effectId 1000 and 4 strips
ALGORITHM_API EffectTypeInfo effectTypeInit(const char* name, int width, int height);

/// One strip of a YUV frame.
struct YuvStripDesc {
  uint8_t* y;        ///< first luma byte of the strip
  uint8_t* uv;       ///< first chroma byte of the strip
  int32_t width;     ///< pixels per row
  int32_t rows;      ///< luma rows in the strip
  int32_t yStride;   ///< bytes from one luma row to the next
  int32_t uvStride;  ///< bytes from one chroma row to the next
};

/// One strip of a packed 3-byte work image. The fields from effectId on are only read by
/// EffectFunction.
struct RgbStripDesc {
  uint8_t* pixels;       ///< first byte of the strip; row pitch is 3 x width
  int32_t width;         ///< pixels per row
  int32_t rows;          ///< rows in the strip
  int32_t yStride;       ///< of the frame that RGB2YUV writes
  int32_t uvStride;      ///< of the frame that RGB2YUV writes
  int32_t channels;      ///< 3
  int32_t effectId;      ///< as in EffectTypeInfo
  int32_t effectFlag;    ///< as in EffectTypeInfo
  uint8_t* overlay;      ///< this strip's band of the overlay picture
  int32_t overlayWidth;  ///< pixels
  int32_t overlayRows;   ///< rows of the band
};

/// Where an effect strip lies in its frame.
struct StripRange {
  int32_t reserved;     ///< not read
  int32_t firstRow;     ///< of the strip, in rows of the frame
  int32_t imageHeight;  ///< rows of the frame
};

/// The work image that a run's frame is decoded into: width x height x 3 bytes from the start to
/// the end of each run, untouched if the run does not need it; null between runs.
ALGORITHM_API extern uint8_t* gCLAHE_Rgb_Buffer_in;
/// The work image that a run's effect writes: as gCLAHE_Rgb_Buffer_in.
ALGORITHM_API extern uint8_t* gCLAHE_Rgb_Buffer_out;

/// Allocates both work images (a global is null when memory is short) and starts the process-wide
/// pool if it can. Not locked. Runs do this themselves, at their start. Like each run, this
/// overwrites the globals without freeing what they held: call fastcvPollDestory() first.
/// @param width   pixels, at least 1
/// @param height  rows, at least 1
/// @return 0
ALGORITHM_API int fastcvPollInit(int width, int height);
/// Frees the work images and sets the globals to null. Not locked.
ALGORITHM_API void fastcvPollDestory();

/// Strip callback (ThreadPoolTaskFunc) of the effect phase: runs the Pretty filter whose
/// identifier, as effectTypeInit() reports it, is the input's effectId; every other one copies with
/// bytes 0 and 2 exchanged.
/// @param input   an RgbStripDesc, whose sizes, effect and overlay are used
/// @param param   ignored
/// @param output  an RgbStripDesc, of which only the pixels are used; they may be the input's
ALGORITHM_API void EffectFunction(const void* input, const void* param, void* output);

/// Runs the named effect on a frame, in place. An unknown name or a missing picture leaves the
/// frame as it is, apart from what the two conversions round and clip. When a quarter of the height
/// is even, the last height mod 4 rows keep their values. A size below 1 does nothing, nor does a
/// run when memory is short. When the pool can't start, the run does its work on the calling
/// thread.
///
/// Runs queue up behind one process-wide lock, so any thread may call this, except those of the
/// process-wide pool.
/// @param effectName  see effectTypeInit(); not null
/// @param format      ignored, may be null
/// @param y           luma plane, height rows of yStride bytes
/// @param uv          chroma plane, V,U pairs, floor(height x uvStride / 2) bytes
/// @param height      rows, preferably even; NOTE the order: before the width
/// @param width       pixels per row, preferably even
/// @param yStride     bytes from one luma row to the next, at least the width
/// @param uvStride    bytes of a chroma row, the width; for others see yuv_convert.h
extern "C" ALGORITHM_API void KAVRO_PrettyEffect_Function(const char* effectName,
                                                          const char* format, uint8_t* y,
                                                          uint8_t* uv, int height, int width,
                                                          int yStride, int uvStride);
