package com.orvik.camera.common.Native;

import androidx.annotation.NonNull;
import java.nio.ByteBuffer;

/**
 * A semi-planar YUV 4:2:0 frame in a direct buffer of the caller's. Immutable; the buffer's contents
 * are not copied.
 *
 * <pre>
 *   index 0                              chromaOffset
 *         +------------------+---------+---+-------------------+---------+
 *         | Y Y Y Y ...      | padding |   | V U V U ... NV21  | padding |
 *         | Y Y Y Y ...      | padding |   | U V U V ... NV12  | padding |
 *         +------------------+---------+---+-------------------+---------+
 *           width              rowStride     width               chromaRowStride
 *
 *   height rows of luma                    height / 2 rows of one pair for each 2 x 2 pixels
 * </pre>
 *
 * <p>The luma starts at index 0; position and limit of the buffer are neither used nor changed. The
 * buffer may end with the last row's last pair, without padding.
 */
public final class Frame {
  /** The order of a chroma pair's bytes in memory. */
  public enum Chroma {
    /** V first, a camera's own order. */
    NV21,
    /** U first. */
    NV12
  }

  private final ByteBuffer buffer;
  private final int width;
  private final int height;
  private final Chroma chroma;
  private final int rowStride;
  private final int chromaOffset;
  private final int chromaRowStride;

  /**
   * A frame whose rows may be padded.
   *
   * @param buffer the memory, direct; may be read-only where it is only read from
   * @param width pixels per row, even, at least 2
   * @param height rows, even, at least 2
   * @param chroma the order of chroma pairs
   * @param rowStride bytes from a luma row to the next, at least width
   * @param chromaOffset index of the first chroma pair, not before the end of the last luma row
   * @param chromaRowStride bytes from a chroma row to the next, at least width
   * @throws NullPointerException when buffer or chroma is null
   * @throws IllegalArgumentException when the buffer is not direct or too small, or a number is out
   *     of its range
   */
  public Frame(@NonNull ByteBuffer buffer, int width, int height, @NonNull Chroma chroma, int rowStride,
      int chromaOffset, int chromaRowStride) {
    this.buffer = Checks.direct(buffer, "buffer");
    this.width = Checks.even(Checks.atLeast(width, 2, "width"), "width");
    this.height = Checks.even(Checks.atLeast(height, 2, "height"), "height");
    this.chroma = Checks.notNull(chroma, "chroma");
    Checks.stride(rowStride, width, "rowStride", width + " luma samples");
    Checks.stride(chromaRowStride, width, "chromaRowStride", width / 2 + " chroma pairs");
    long lumaBytes = (height - 1L) * rowStride + width;
    Checks.require(chromaOffset >= lumaBytes,
        "chromaOffset is " + chromaOffset + ", but the luma ends at " + lumaBytes);
    Checks.holds(buffer, "buffer", chromaOffset, height / 2, chromaRowStride, width,
        Checks.size(width, height) + " pixels with their chroma at " + chromaOffset);
    this.rowStride = rowStride;
    this.chromaOffset = chromaOffset;
    this.chromaRowStride = chromaRowStride;
  }

  /**
   * A frame whose rows follow each other without gaps, the chroma directly after the luma.
   *
   * @param buffer the memory, direct, at least {@link CameraFrames#bytes} bytes
   * @param width pixels per row, even, at least 2
   * @param height rows, even, at least 2
   * @param chroma the order of chroma pairs
   * @return the frame
   * @throws NullPointerException as the constructor
   * @throws IllegalArgumentException as the constructor
   */
  @NonNull
  public static Frame of(@NonNull ByteBuffer buffer, int width, int height, @NonNull Chroma chroma) {
    Checks.direct(buffer, "buffer");
    int bytes = CameraFrames.bytes(width, height);
    Checks.holds(buffer, "buffer", 0, 1, 0, bytes, Checks.size(width, height) + " pixels");
    return new Frame(buffer, width, height, chroma, width, width * height, width);
  }

  /**
   * A frame in a new direct buffer, all zero, which the virtual machine frees like any other.
   *
   * @param width pixels per row, even, at least 2
   * @param height rows, even, at least 2
   * @param chroma the order of chroma pairs
   * @return the frame, its rows without gaps
   * @throws NullPointerException when chroma is null
   * @throws IllegalArgumentException when a size is below 2 or odd, or the frame would pass {@link
   *     Integer#MAX_VALUE} bytes
   */
  @NonNull
  public static Frame allocate(int width, int height, @NonNull Chroma chroma) {
    return of(CameraFrames.allocate(width, height), width, height, chroma);
  }

  /**
   * The memory.
   *
   * @return the buffer that the frame was made of
   */
  @NonNull
  public ByteBuffer buffer() {
    return buffer;
  }

  /**
   * Pixels per row.
   *
   * @return the width, even
   */
  public int width() {
    return width;
  }

  /**
   * Rows.
   *
   * @return the height, even
   */
  public int height() {
    return height;
  }

  /**
   * The order of chroma pairs.
   *
   * @return the order
   */
  @NonNull
  public Chroma chroma() {
    return chroma;
  }

  /**
   * Bytes from a luma row to the next.
   *
   * @return the stride, at least the width
   */
  public int rowStride() {
    return rowStride;
  }

  /**
   * Index of the first chroma pair.
   *
   * @return the index
   */
  public int chromaOffset() {
    return chromaOffset;
  }

  /**
   * Bytes from a chroma row to the next.
   *
   * @return the stride, at least the width
   */
  public int chromaRowStride() {
    return chromaRowStride;
  }

  /** As the natives take it: width, height, strides and offset as above, whether V is first. */
  int[] shape() {
    return new int[] {
      width, height, rowStride, chromaOffset, chromaRowStride, chroma == Chroma.NV21 ? 1 : 0
    };
  }
}
