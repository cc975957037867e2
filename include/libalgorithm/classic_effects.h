/// @file
/// The classic photo effects, on packed 3-byte pixels.
///
/// Every effect reads width x height pixels (rows packed, 3 bytes each: B, G, R) and writes as
/// many, CROSSED:
///
///     src  B G R        blue  byte 0 -> byte 2
///           \|/         green byte 1 -> byte 1
///     dst  R G B        red   byte 2 -> byte 0
///
/// Sizes are in pixels; a width or height below 1 does nothing. Nothing outside the images is read
/// or written; where a routine reads neighbours, images of 1 or 2 rows or columns get only the
/// steps that stay inside. When work memory is short, dst stays as it is. Nothing is logged.
///
/// "In place" says how src and dst may overlap:
///
///     yes  the same buffer or any overlap: pixels are taken one at a time in memory order
///     no   distinct buffers without overlap
///
/// Thread-safe and reentrant, except Colorpaint and areaeffect. Tables are built once per process.
#pragma once

#include "libalgorithm/export.h"

/// @name Tone and colour
/// In place: yes.
/// @{

/// S-curves on red and green, blue halved and lifted to 64..191.
/// @param src     width x height pixels B, G, R; read only, except where it overlaps dst
/// @param dst     as many pixels R, G, B
/// @param width   pixels per row
/// @param height  rows
ALGORITHM_API void CrossProcess(unsigned char* src, unsigned char* dst, int width, int height);
/// Grey, weights 306, 601 and 117 of 1024 for red, green and blue (BT.601 luma).
/// @copydetails CrossProcess
ALGORITHM_API void GrayScale(unsigned char* src, unsigned char* dst, int width, int height);
/// Sepia tone: a 3 x 3 matrix in 1/2048, limited to 255.
/// @copydetails CrossProcess
ALGORITHM_API void Sepia(unsigned char* src, unsigned char* dst, int width, int height);
/// Contrast on green and blue, all three screened; blue stays below 192.
/// @copydetails CrossProcess
ALGORITHM_API void Pink(unsigned char* src, unsigned char* dst, int width, int height);
/// Green halved and lifted by 127, blue a constant 100.
/// @copydetails CrossProcess
ALGORITHM_API void Summer(unsigned char* src, unsigned char* dst, int width, int height);
/// Red and green start late (at 170 and 85) and end at 255; blue stays.
/// @copydetails CrossProcess
ALGORITHM_API void Ocean(unsigned char* src, unsigned char* dst, int width, int height);
/// 255 minus each channel.
/// @copydetails CrossProcess
ALGORITHM_API void negative(unsigned char* src, unsigned char* dst, int width, int height);
/// Red + 100, green + 50, blue + 12, limited to 255. (Despite its name, it forms no blocks.)
/// @copydetails CrossProcess
ALGORITHM_API void Mosaic(unsigned char* src, unsigned char* dst, int width, int height);
/// Experimental: contrast of gain 1.5, red pulled down before it; screened, blue to 80 percent.
/// @copydetails CrossProcess
ALGORITHM_API void otherTest(unsigned char* src, unsigned char* dst, int width, int height);

/// @}
/// @name Lomography
/// @{

/// Three tone curves: contrast and screen on red, screen on green, a dimmed screen on blue. In
/// place: no.
/// @copydetails CrossProcess
/// @param auxImage   ignored, may be null
/// @param auxWidth   ignored
/// @param auxHeight  ignored
ALGORITHM_API void Lomo(unsigned char* src, unsigned char* dst, int width, int height,
                        unsigned char* auxImage, int auxWidth, int auxHeight);
/// Lomo's curves, then a vignette: full brightness up to a fifth of the squared half diagonal,
/// falling to black at its end. In place: the same buffer only.
/// @param src     one int a channel, 3 a pixel: B, G, R; values are limited to 0..255 first
/// @param dst     as many ints R, G, B, 0..255
/// @param width   pixels per row
/// @param height  rows
ALGORITHM_API void LomoFun(int* src, int* dst, int width, int height);

/// @}
/// @name Geometry and light
/// In place: no.
/// @{

/// Barrel distortion about the centre, nearest neighbour, in fixed point.
/// @copydetails CrossProcess
/// @param strength  ignored
ALGORITHM_API void Fisheye(unsigned char* src, unsigned char* dst, float strength, int width,
                           int height);
/// Light that falls off from the centre. Dark blue may wrap below 0: that is its look.
/// @copydetails CrossProcess
/// @param radius  how far the full light reaches, 1.0 = the corners. Useful from about 0.3, below
///                which products wrap near the corners, to 1.0, from which the light is even. Any
///                value is safe
ALGORITHM_API void FillLightFix(unsigned char* src, unsigned char* dst, float radius, int width,
                                int height);

/// @}
/// @name Blur
/// In place: no.
/// @{

/// Tilt-shift: a box blur whose radius is 0 in the middle column and grows to 24 at both sides.
/// @copydetails CrossProcess
ALGORITHM_API void miniature(unsigned char* src, unsigned char* dst, int width, int height);
/// Tilt-shift down the rows, also for one strip of a taller image: row y has the radius of entry
/// rowOffset + y in a ramp of rampLength rows (24 at its ends, 0 in its middle). Boxes do not reach
/// beyond the strip.
/// @copydetails CrossProcess
/// @param rowOffset   the strip's first row in the ramp, at least 0
/// @param rampLength  rows of the ramp, at least rowOffset + height
ALGORITHM_API void miniature_r(unsigned char* src, unsigned char* dst, int width, int height,
                               int rowOffset, int rampLength);

/// @}
/// @name Drawings
/// 3 x 3 neighbourhoods. Except in nature and Emboss, the outermost rows and columns are copies of
/// their inner neighbours; where there is only a single row or column, that copy is left out, and
/// dst keeps what it held. In place: no.
/// @{

/// Dark edge lines on white: 255 minus the length of the luminance gradient (Prewitt, doubled).
/// @copydetails CrossProcess
ALGORITHM_API void Sketch(unsigned char* src, unsigned char* dst, int width, int height);
/// Sketch on paper: bytes 0 and 1 of the paper are added to red and green; blue takes none.
/// @copydetails CrossProcess
/// @param auxImage   the paper: auxWidth x auxHeight pixels of 4 bytes, rows packed; stretched over
///                   the image by nearest neighbour, and a size below 1 does nothing
/// @param auxWidth   pixels per row of the paper
/// @param auxHeight  rows of the paper
ALGORITHM_API void newsketch(unsigned char* src, unsigned char* dst, int width, int height,
                             unsigned char* auxImage, int auxWidth, int auxHeight);
/// Ink: each channel overlaid with its inverted Sobel edge map. The float is ignored.
/// @copydetails CrossProcess
ALGORITHM_API void Prague(unsigned char* src, unsigned char* dst, int width, int height, float);
/// Cartoon: each pixel divided by the brightest of its diagonal neighbours; what exceeds 255 wraps.
/// The float is ignored.
/// @copydetails CrossProcess
ALGORITHM_API void PragueCarton(unsigned char* src, unsigned char* dst, int width, int height,
                                float);
/// Saturation raised relative to the upper left neighbour, then contrast of gain 1.5. Edges are
/// copies except for the left column, which takes bytes of dst from offset y x width + 1 on; the
/// top left pixel keeps two bytes that dst held before.
/// @copydetails CrossProcess
ALGORITHM_API void nature(unsigned char* src, unsigned char* dst, int width, int height);
/// Grey relief of the luminance step from two rows up and two columns left. Rows 0 and 1 and
/// columns 0 and 1 are computed from what dst held before; the last row but one repeats the row
/// above it.
/// @copydetails CrossProcess
ALGORITHM_API void Emboss(unsigned char* src, unsigned char* dst, int width, int height);

/// @}
/// @name Pictures
/// Pictures of the device, from "/data/data/com.android.camera/effect/", stretched over the image
/// by nearest neighbour and decoded anew in each call. A picture that can't be read leaves dst as
/// it is. On Linux the folder named by the environment variable ALGORITHM_DEVICE_ROOT, if set, is
/// prepended to that path. In place: yes. The pictures are process-wide: do not call these at the
/// same time as each other, the effect pipeline or effectTypeInit.
/// @{

/// Adds "colorpaint.png", limited to 255; its alpha is ignored.
/// @copydetails CrossProcess
ALGORITHM_API void Colorpaint(unsigned char* src, unsigned char* dst, int width, int height);
/// Composites "front.png", whose colours are already premultiplied, over the image with its alpha a
/// second time, and inverts the image where "effect.png" has any alpha. "effect.png" must be at
/// least as wide and as tall as "front.png", otherwise nothing is done; a wider one is read at the
/// byte offsets of "front.png".
/// @copydetails CrossProcess
ALGORITHM_API void areaeffect(unsigned char* src, unsigned char* dst, int width, int height);

/// @}
