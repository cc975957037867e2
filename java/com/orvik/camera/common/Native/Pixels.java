package com.orvik.camera.common.Native;

import androidx.annotation.NonNull;
import java.nio.ByteBuffer;

/**
 * An image of 32-bit pixels in a direct buffer of the caller's. Immutable; the buffer's contents are
 * not copied.
 *
 * <pre>
 *   index 0             4 x width       rowStride
 *         +-----------------+---------------+----
 *         | row 0           | never touched | row 1 ...
 *         +-----------------+---------------+----
 *         RGBA: R G B A  R G B A ...        BGRA: B G R A  B G R A ...
 * </pre>
 *
 * <p>The image starts at index 0; position and limit of the buffer are neither used nor changed.
 * The buffer may end with the last row's last pixel, without padding.
 */
public final class Pixels {
  /** Bytes of a pixel. */
  static final int BYTES = 4;

  /** The order of a pixel's bytes in memory. */
  public enum Order {
    /** Red first: the memory of an Android {@code Bitmap} of {@code ARGB_8888}. */
    RGBA,
    /** Blue first: the words {@code 0xAARRGGBB} of this package's natives. */
    BGRA
  }

  private final ByteBuffer buffer;
  private final int width;
  private final int height;
  private final int rowStride;
  private final Order order;

  /**
   * An image whose rows may be padded.
   *
   * @param buffer the memory, direct; may be read-only where it is only read from
   * @param width pixels per row, at least 1
   * @param height rows, at least 1
   * @param rowStride bytes from a row to the next, at least 4 &times; width
   * @param order the order of a pixel's bytes
   * @throws NullPointerException when buffer or order is null
   * @throws IllegalArgumentException when the buffer is not direct or too small, or a number is out
   *     of its range
   */
  public Pixels(@NonNull ByteBuffer buffer, int width, int height, int rowStride, @NonNull Order order) {
    this.buffer = Checks.direct(buffer, "buffer");
    this.width = Checks.atLeast(width, 1, "width");
    this.height = Checks.atLeast(height, 1, "height");
    this.order = Checks.notNull(order, "order");
    long rowBytes = (long) BYTES * width;
    Checks.stride(rowStride, rowBytes, "rowStride", width + " pixels");
    this.rowStride = rowStride;
    Checks.holds(buffer, "buffer", 0, height, rowStride, rowBytes,
        Checks.size(width, height) + " pixels with a row stride of " + rowStride);
  }

  /**
   * An image whose rows follow each other without gaps.
   *
   * @param buffer the memory, direct
   * @param width pixels per row, at least 1
   * @param height rows, at least 1
   * @param order the order of a pixel's bytes
   * @return the image
   * @throws NullPointerException as the constructor
   * @throws IllegalArgumentException as the constructor
   */
  @NonNull
  public static Pixels of(@NonNull ByteBuffer buffer, int width, int height, @NonNull Order order) {
    return new Pixels(buffer, width, height, packedStride(width), order);
  }

  /**
   * An image in a new direct buffer, all zero, which the virtual machine frees like any other.
   *
   * @param width pixels per row, at least 1
   * @param height rows, at least 1
   * @param order the order of a pixel's bytes
   * @return the image, its rows without gaps
   * @throws NullPointerException when order is null
   * @throws IllegalArgumentException when a size is below 1, or the image would pass {@link
   *     Integer#MAX_VALUE} bytes
   */
  @NonNull
  public static Pixels allocate(int width, int height, @NonNull Order order) {
    Checks.atLeast(height, 1, "height");
    long bytes = (long) packedStride(width) * height;
    Checks.require(bytes <= Integer.MAX_VALUE,
        Checks.size(width, height) + " pixels take more than " + Integer.MAX_VALUE + " bytes");
    return of(ByteBuffer.allocateDirect((int) bytes), width, height, order);
  }

  private static int packedStride(int width) {
    Checks.atLeast(width, 1, "width");
    Checks.require(width <= Integer.MAX_VALUE / BYTES,
        "width is " + width + ", but rows must not pass " + Integer.MAX_VALUE + " bytes");
    return BYTES * width;
  }

  /**
   * The memory.
   *
   * @return the buffer that the image was made of
   */
  @NonNull
  public ByteBuffer buffer() {
    return buffer;
  }

  /**
   * Pixels per row.
   *
   * @return the width, at least 1
   */
  public int width() {
    return width;
  }

  /**
   * Rows.
   *
   * @return the height, at least 1
   */
  public int height() {
    return height;
  }

  /**
   * Bytes from a row to the next.
   *
   * @return the stride, at least 4 &times; width
   */
  public int rowStride() {
    return rowStride;
  }

  /**
   * The order of a pixel's bytes.
   *
   * @return the order
   */
  @NonNull
  public Order order() {
    return order;
  }

  /** As the natives take it: width, height, row stride, whether red is first. */
  int[] shape() {
    return new int[] {width, height, rowStride, order == Order.RGBA ? 1 : 0};
  }
}
