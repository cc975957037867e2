package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;

/**
 * Converts camera frames to 32-bit pixels and back, and rotates frames.
 *
 * <p>Buffers, layouts and the treatment of bad input: see the {@linkplain
 * com.orvik.camera.common.Native package description}. In short: direct buffers only; the memory of
 * results is never freed; bad input gives one line in the log with the tag {@code YUVAlgorithm} and
 * null or an untouched destination, never an exception.
 *
 * <h2>Conversions</h2>
 *
 * <table>
 *   <caption>Sizes in bytes, for n = width &times; height pixels (divisions round down)</caption>
 *   <tr><th>method</th><th>source, at least</th><th>result, exactly</th><th>chroma order</th></tr>
 *   <tr><td>{@link #YUV2ARGB}</td><td>3n / 2</td><td>4n</td><td>U V (NV12)</td></tr>
 *   <tr><td>{@link #YVU2ARGB}</td><td>3n / 2</td><td>4n</td><td>V U (NV21)</td></tr>
 *   <tr><td>{@link #ARGB2YUV}</td><td>4n</td><td>3n / 2</td><td>U V (NV12)</td></tr>
 *   <tr><td>{@link #ARGB2YVU}</td><td>4n</td><td>3n / 2</td><td>V U (NV21)</td></tr>
 * </table>
 *
 * <p>Arithmetic: BT.601, video range, truncated. Black is Y 16, U 128, V 128; white encodes to Y
 * 234, so it does not survive a round trip (it comes back as 253). Encoding takes the chroma of a
 * block from its <b>bottom-left pixel</b> alone; nothing is averaged.
 *
 * <p>Odd sizes are allowed: a missing row or column repeats the last one, and each block row has
 * (width + 1) / 2 pairs that follow each other without a gap. Such a frame needs more chroma bytes
 * than it has room for, since it ends after 3n / 2 bytes even so (3 &times; 3 pixels: 13 bytes, 9
 * luma and 4 chroma). Encoding drops what doesn't fit; decoding takes a chroma byte beyond the
 * frame's end from the block row above, or as 128 when there is none, and never reads what a larger
 * buffer holds there.
 *
 * <h2>Threads</h2>
 *
 * <p>All calls may overlap, as long as no call writes a buffer that another one uses.
 */
public final class YUVAlgorithm {
  static {
    System.loadLibrary("Algorithm");
  }

  private YUVAlgorithm() {}

  /**
   * Reserved; does nothing. All arguments are ignored.
   *
   * @param buffer ignored
   * @param width ignored
   * @param height ignored
   * @param factor ignored
   * @return null
   */
  public static native ByteBuffer minify(ByteBuffer buffer, int width, int height, int factor);

  /**
   * Reserved; does nothing. All arguments are ignored.
   *
   * @param buffer ignored
   * @param width ignored
   * @param height ignored
   * @return null
   */
  public static native int[] convertToARGB(ByteBuffer buffer, int width, int height);

  /**
   * Decodes a frame with chroma pairs U, V (NV12).
   *
   * @param yuv the frame; only read
   * @param width pixels per row
   * @param height rows
   * @return a new direct buffer with the ARGB image (bytes B, G, R, 255), never freed; null on bad
   *     input or when memory is short
   */
  public static native ByteBuffer YUV2ARGB(ByteBuffer yuv, int width, int height);

  /**
   * Encodes an ARGB image to a frame with chroma pairs U, V (NV12).
   *
   * @param argb the image (bytes B, G, R, A; A is ignored); only read
   * @param width pixels per row
   * @param height rows
   * @return a new direct buffer with the frame, never freed; null on bad input or when memory is
   *     short
   */
  public static native ByteBuffer ARGB2YUV(ByteBuffer argb, int width, int height);

  /**
   * Decodes a frame with chroma pairs V, U (NV21, the camera's own order).
   *
   * @param yvu the frame; only read
   * @param width pixels per row
   * @param height rows
   * @return a new direct buffer with the ARGB image (bytes B, G, R, 255), never freed; null on bad
   *     input or when memory is short
   */
  public static native ByteBuffer YVU2ARGB(ByteBuffer yvu, int width, int height);

  /**
   * Encodes an ARGB image to a frame with chroma pairs V, U (NV21, the camera's own order).
   *
   * @param argb the image (bytes B, G, R, A; A is ignored); only read
   * @param width pixels per row
   * @param height rows
   * @return a new direct buffer with the frame, never freed; null on bad input or when memory is
   *     short
   */
  public static native ByteBuffer ARGB2YVU(ByteBuffer argb, int width, int height);

  /**
   * Rotates a frame of either chroma order into another buffer; 90 turns <b>counter-clockwise</b>.
   * Chroma pairs are moved as a unit; nothing is resampled.
   *
   * <p>The sizes are those of the <b>destination</b>. For 90 and 270 the source is {@code height}
   * pixels wide and {@code width} rows tall:
   *
   * <pre>
   *   source (4 wide, 2 tall)    rotateYUV(source, destination, 2, 4, 90)    (..., 2, 4, 270)
   *
   *        1 2 3 4                             4 8                                5 1
   *        5 6 7 8                             3 7                                6 2
   *                                            2 6                                7 3
   *                                            1 5                                8 4
   * </pre>
   *
   * <p>Both buffers must hold 3 &times; width &times; height / 2 bytes, and both sizes must be
   * <b>even</b>. The images must not share memory: rotating in place is refused like any other bad
   * input.
   *
   * @param source the frame to rotate; only read
   * @param destination receives the rotated frame; bytes after the image are not written
   * @param width pixels per row of the destination, even
   * @param height rows of the destination, even
   * @param degrees 90, 180 or 270; any other value leaves the destination as it is, without an
   *     error
   */
  public static native void rotateYUV(
      ByteBuffer source, ByteBuffer destination, int width, int height, int degrees);
}
