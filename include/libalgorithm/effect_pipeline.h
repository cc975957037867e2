// The effect road: one NV21 frame through conversion, a named effect and conversion back, in place,
// in strips on the process-wide pool.
//
//   frame (NV21) --YUV2RGB--> gCLAHE_Rgb_Buffer_in --EffectFunction--> gCLAHE_Rgb_Buffer_out
//        ^                        (4 strips)             (1 or 4 strips)        |
//        +---------------------------- RGB2YUV (4 strips) ---------------------+
//
// Frames with even sizes and chroma rows without gaps take the three steps a few rows at a time
// within each of four strips, with the same result, and need no work images.
#pragma once

#include <cstdint>

#include "libalgorithm/export.h"

/// What an effect name stands for.
struct EffectTypeInfo {
  uint8_t* overlay;       ///< overlay picture: R, G, B, A bytes, rows packed; null for a name
                          ///< without one. Valid until the next call that decodes a picture. When
                          ///< "newsketch_effect" lacks its own, the picture decoded last, if any.
  int32_t overlayWidth;   ///< pixels
  int32_t overlayHeight;  ///< rows
  int32_t effectId;       ///< 0..27; 1000 for an unknown name or a missing picture
  int32_t stripCount;     ///< 1 or 4
  int32_t effectFlag;     ///< -1 for "miniature" on a landscape frame, else 0
};

/// Looks an effect name up (exact, case-sensitive) and decodes its overlay picture, if it has one,
/// from "/data/data/com.android.camera/effect/". Landscape frames (width > height) may get a
/// picture of their own. Not reentrant: all pictures share one process-wide bitmap.
/// @param name  not null
ALGORITHM_API EffectTypeInfo effectTypeInit(const char* name, int width, int height);

/// One strip of a YUV frame.
struct YuvStripDesc {
  uint8_t* y;     ///< first luma byte of the strip
  uint8_t* uv;    ///< first chroma byte of the strip
  int32_t width;  ///< pixels per row
  int32_t rows;   ///< luma rows in the strip
  int32_t yStride;
  int32_t uvStride;
};

/// One strip of a packed 3-byte work image. The fields from effectId on are only read by
/// EffectFunction.
struct RgbStripDesc {
  uint8_t* pixels;  ///< first byte of the strip; row pitch is 3 x width
  int32_t width;
  int32_t rows;
  int32_t yStride;
  int32_t uvStride;
  int32_t channels;  ///< 3
  int32_t effectId;
  int32_t effectFlag;
  uint8_t* overlay;      ///< this strip's band of the overlay picture
  int32_t overlayWidth;  ///< pixels
  int32_t overlayRows;   ///< rows of the band
};

/// Where an effect strip lies in its frame.
struct StripRange {
  int32_t reserved;
  int32_t firstRow;
  int32_t imageHeight;
};

/// The two work images, width x height x 3 bytes each, of a run that needs them; null between runs.
ALGORITHM_API extern uint8_t* gCLAHE_Rgb_Buffer_in;
ALGORITHM_API extern uint8_t* gCLAHE_Rgb_Buffer_out;

/// Allocates both work images (a global is null when memory is short) and makes sure that the
/// process-wide pool runs. Returns 0.
ALGORITHM_API int fastcvPollInit(int width, int height);
/// Frees the work images and sets the globals to null.
ALGORITHM_API void fastcvPollDestory();

/// Strip callback of the effect phase: runs the Pretty filter of input's effectId (20..27) from
/// input's to output's pixels (both RgbStripDesc); every other identifier copies with bytes 0 and 2
/// exchanged. `param` is ignored.
ALGORITHM_API void EffectFunction(const void* input, const void* param, void* output);

/// Runs the named effect on a frame, in place. An unknown name or a missing picture leaves the
/// frame as it is, up to conversion rounding. When a quarter of the height is even, the last
/// height mod 4 rows keep their values.
/// @param effectName  see effectTypeInit; not null
/// @param format      ignored, may be null
/// @param y, uv       luma and chroma planes
/// @param height, width  NOTE the order; below 1 does nothing
/// @param yStride, uvStride  bytes per row
/// Runs queue up behind one process-wide lock, so any thread may call.
extern "C" ALGORITHM_API void KAVRO_PrettyEffect_Function(const char* effectName,
                                                          const char* format, uint8_t* y,
                                                          uint8_t* uv, int height, int width,
                                                          int yStride, int uvStride);
