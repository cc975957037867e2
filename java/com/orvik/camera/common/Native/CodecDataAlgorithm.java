package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;

/**
 * Decodes JPEG files to 32-bit pixels and encodes pixels to JPEG files, in memory.
 *
 * <p>Pixels are ARGB images in both directions, 4 &times; width &times; height bytes, rows packed:
 *
 * <pre>
 *   index    0   1   2   3     4   5   6   7
 *          +---+---+---+---+ +---+---+---+---+
 *          | B | G | R | A | | B | G | R | A |  ...
 *          +---+---+---+---+ +---+---+---+---+
 * </pre>
 *
 * <p>Buffers and the treatment of bad input: see the {@linkplain com.orvik.camera.common.Native
 * package description}. In short: direct buffers only; the memory of result buffers is never freed;
 * bad input gives one line in the log with the tag {@code CodecDataAlgorithm} and null, never an
 * exception. Calls share nothing and may overlap.
 */
public final class CodecDataAlgorithm {
  static {
    System.loadLibrary("Algorithm");
  }

  private CodecDataAlgorithm() {}

  /**
   * Decodes a JPEG file: baseline or progressive, colour, grey or CMYK. Orientation tags are not
   * applied.
   *
   * <p>A truncated file decodes as far as it goes, and the missing part is grey. Bytes that are not
   * a JPEG file (other picture formats included), buffers without memory to read (null, heap,
   * empty), images above {@link Integer#MAX_VALUE} bytes, and files that demand far more work
   * or memory than photos of their size log a line that ends in "decode fail".
   *
   * @param jpeg the file, from index 0 to the buffer's <b>capacity</b>: pass a slice when the
   *     buffer is larger than the file; only read
   * @param size at least two elements; element 0 receives the width and element 1 the height, the
   *     others, and on failure all of them, are left unchanged
   * @return a new direct buffer with the pixels (bytes B, G, R, 255), never freed; null on failure
   */
  public static native ByteBuffer JPEG2ARGB(ByteBuffer jpeg, int[] size);

  /**
   * Encodes pixels to a JPEG file.
   *
   * <p>An image that the codec refuses (more than 65,500 pixels in a row or column) logs a line
   * that ends in "encode fail".
   *
   * @param pixels the image, at least 4 &times; width &times; height bytes (B, G, R, A; A is
   *     ignored); only read
   * @param width pixels per row
   * @param height rows
   * @param quality 0 (smallest file) to 100 (best); values outside are clamped
   * @return the bytes of the file, in an ordinary array; null on failure
   */
  public static native byte[] ARGB2JPEG(ByteBuffer pixels, int width, int height, int quality);
}
