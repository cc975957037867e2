package com.orvik.camera.common.Native;

import java.nio.Buffer;
import java.nio.ByteBuffer;
import java.util.Objects;

/**
 * Packs a camera's planes into the frames that the natives take, and checks buffers before a native
 * gets them.
 *
 * <p>A camera delivers three planes, whose rows may be padded and whose chroma samples may not be
 * adjacent. Two forms are common, shown here for the chroma of 4 &times; 4 pixels, 2 &times; 2
 * samples per plane:
 *
 * <pre>
 *   pixel stride 1, row stride 4      pixel stride 2, row stride 6
 *
 *     +----+----+----+----+             +----+----+----+----+----+----+
 *     | U0 | U1 | padding |             | V0 | U0 | V1 | U1 | padding |
 *     | U2 | U3 +----+----+             | V2 | U2 | V3 | U3 +----+----+
 *     +----+----+                       +----+----+----+----+
 *     v likewise, in its own memory     v starts at V0 and u at U0, in the same memory
 * </pre>
 *
 * <p>A plane may end with its last sample, without the padding of the last row. {@link #pack} makes
 * an NV21 frame of any such planes:
 *
 * <pre>
 *   index 0                    width x height
 *         +--------------------+-------------------+
 *         | Y Y Y Y ...        | V U V U ...       |
 *         +--------------------+-------------------+
 *         one byte a pixel     one pair for each block of 2 x 2 pixels
 * </pre>
 *
 * <p>With the planes u and v swapped, {@code pack} and {@link #unpack} work on NV12. For a preview,
 * allocate one frame and pack into it each time:
 *
 * <pre>{@code
 *   ByteBuffer frame = CameraFrames.allocate(width, height);    // once
 *   ...
 *   CameraFrames.pack(y, u, v, width, height, frame);
 *   EffectAlgorithm.Effect(frame, width, height, "PrettySweet");
 * }</pre>
 *
 * <h2>Buffers and bad input</h2>
 *
 * <p>As everywhere in this package, images and planes start at index 0 of their buffers, sizes are
 * checked against the capacity, and position and limit are neither used nor changed. Planes may be
 * direct or heap buffers, frames must be direct.
 *
 * <p>Unlike the natives, these methods <b>throw</b>: {@link NullPointerException} for null, {@link
 * IllegalArgumentException} for anything else, with a message that names the argument, what it has
 * and what is needed. In that case nothing is written.
 *
 * <p>This class is plain Java and does not load the native library. Calls share nothing and may
 * overlap, as long as no call writes a buffer that another one uses.
 */
public final class CameraFrames {
  private static final int FRAME_HALF_BYTES = 3; // memory of a pixel, in half bytes
  private static final int ARGB_HALF_BYTES = 8;

  private CameraFrames() {}

  /** A plane of samples, one byte each. */
  public static final class Plane {
    private final ByteBuffer buffer;
    private final int rowStride;
    private final int pixelStride;

    /**
     * Makes a plane; how many rows and samples it must hold is checked when it is used.
     *
     * @param buffer the samples, the first at index 0; not null, not copied
     * @param rowStride bytes from a row's first sample to the next row's, at least 1
     * @param pixelStride bytes from a sample to the next one in its row, at least 1
     */
    public Plane(ByteBuffer buffer, int rowStride, int pixelStride) {
      this.buffer = Objects.requireNonNull(buffer, "buffer is null");
      this.rowStride = requirePositive(rowStride, "rowStride");
      this.pixelStride = requirePositive(pixelStride, "pixelStride");
    }

    /**
     * The samples.
     *
     * @return the buffer that the plane was made of
     */
    public ByteBuffer buffer() {
      return buffer;
    }

    /**
     * Bytes from a row's first sample to the next row's.
     *
     * @return the stride, at least 1
     */
    public int rowStride() {
      return rowStride;
    }

    /**
     * Bytes from a sample to the next one in its row.
     *
     * @return the stride, at least 1
     */
    public int pixelStride() {
      return pixelStride;
    }
  }

  /**
   * The size of a frame in bytes, 3 &times; width &times; height / 2 (rounded down).
   *
   * @param width pixels per row
   * @param height rows
   * @return the number of bytes
   * @throws IllegalArgumentException when a size is below 1 or the frame would pass {@link
   *     Integer#MAX_VALUE} bytes
   */
  public static int bytes(int width, int height) {
    return bytes(width, height, FRAME_HALF_BYTES);
  }

  /**
   * A new direct buffer for a frame, all zero. The virtual machine frees it like any other.
   *
   * @param width pixels per row
   * @param height rows
   * @return a buffer of {@link #bytes} bytes
   * @throws IllegalArgumentException as {@code bytes} does
   */
  public static ByteBuffer allocate(int width, int height) {
    return ByteBuffer.allocateDirect(bytes(width, height));
  }

  /**
   * Packs planes into a new NV21 frame.
   *
   * @param y the luma plane, width &times; height samples; only read
   * @param u a chroma plane, width / 2 &times; height / 2 samples; only read
   * @param v the other chroma plane, of the same size; only read
   * @param width pixels per row, even
   * @param height rows, even
   * @return a new direct buffer with the frame, freed by the virtual machine like any other
   * @throws NullPointerException when a plane is null
   * @throws IllegalArgumentException when a size is below 1, odd or too large, or a plane's buffer
   *     or row stride is too small
   */
  public static ByteBuffer pack(Plane y, Plane u, Plane v, int width, int height) {
    ByteBuffer frame = allocate(width, height);
    pack(y, u, v, width, height, frame);
    return frame;
  }

  /**
   * Packs planes into an existing NV21 frame.
   *
   * @param y the luma plane, width &times; height samples; only read
   * @param u a chroma plane, width / 2 &times; height / 2 samples; only read
   * @param v the other chroma plane, of the same size; only read
   * @param width pixels per row, even
   * @param height rows, even
   * @param frame receives the frame; direct, not read-only, and not sharing memory with the planes;
   *     bytes after the frame are not written
   * @throws NullPointerException when a plane or the frame is null
   * @throws IllegalArgumentException when a size is below 1, odd or too large, a plane's buffer or
   *     row stride is too small, or the frame is too small, not direct or read-only
   */
  public static void pack(Plane y, Plane u, Plane v, int width, int height, ByteBuffer frame) {
    ByteBuffer out = whole(requireWritable(requireEvenFrame(frame, width, height), "frame"));
    PlaneRows yRows = new PlaneRows(y, "y", width, height);
    PlaneRows uRows = new PlaneRows(u, "u", width / 2, height / 2);
    PlaneRows vRows = new PlaneRows(v, "v", width / 2, height / 2);
    byte[] row = new byte[width];
    for (int i = 0; i < height; i++) {
      yRows.read(i, row, 0, 1);
      out.put(row);
    }
    for (int i = 0; i < height / 2; i++) {
      vRows.read(i, row, 0, 2);
      uRows.read(i, row, 1, 2);
      out.put(row);
    }
  }

  /**
   * Takes an NV21 frame apart into planes. Their padding and the bytes between their samples keep
   * their values.
   *
   * @param frame the frame, direct; only read
   * @param width pixels per row, even
   * @param height rows, even
   * @param y receives width &times; height luma samples; like the other planes, not read-only and
   *     not sharing memory with the frame
   * @param u receives width / 2 &times; height / 2 chroma samples
   * @param v receives the same number
   * @throws NullPointerException when a plane or the frame is null
   * @throws IllegalArgumentException when a size is below 1, odd or too large, a plane's buffer or
   *     row stride is too small, a plane is read-only, or the frame is too small or not direct
   */
  public static void unpack(ByteBuffer frame, int width, int height, Plane y, Plane u, Plane v) {
    ByteBuffer in = whole(requireEvenFrame(frame, width, height));
    PlaneRows yRows = new PlaneRows(y, "y", width, height);
    PlaneRows uRows = new PlaneRows(u, "u", width / 2, height / 2);
    PlaneRows vRows = new PlaneRows(v, "v", width / 2, height / 2);
    requireWritable(y.buffer, "y plane");
    requireWritable(u.buffer, "u plane");
    requireWritable(v.buffer, "v plane");
    byte[] row = new byte[width];
    for (int i = 0; i < height; i++) {
      in.get(row);
      yRows.write(i, row, 0, 1);
    }
    for (int i = 0; i < height / 2; i++) {
      in.get(row);
      vRows.write(i, row, 0, 2);
      uRows.write(i, row, 1, 2);
    }
  }

  /**
   * Checks a frame of either chroma order for {@link YUVAlgorithm#YUV2ARGB}, {@link
   * YUVAlgorithm#YVU2ARGB} and {@link EffectAlgorithm#Effect}.
   *
   * @param frame the frame
   * @param width pixels per row
   * @param height rows
   * @return the frame
   * @throws NullPointerException when the frame is null
   * @throws IllegalArgumentException when a size is below 1 or too large, or the frame is too small
   *     or not direct
   */
  public static ByteBuffer requireFrame(ByteBuffer frame, int width, int height) {
    return requireImage(frame, "frame", width, height, FRAME_HALF_BYTES);
  }

  /**
   * Checks a frame for {@link YUVAlgorithm#rotateYUV} and {@link SFBEngineAlgorithm#SFBProcess},
   * which do not accept odd sizes.
   *
   * @param frame the frame
   * @param width pixels per row, even
   * @param height rows, even
   * @return the frame
   * @throws NullPointerException when the frame is null
   * @throws IllegalArgumentException when a size is below 1, odd or too large, or the frame is too
   *     small or not direct
   */
  public static ByteBuffer requireEvenFrame(ByteBuffer frame, int width, int height) {
    requireFrame(frame, width, height);
    require(width % 2 == 0, "width is " + width + ", but must be even");
    require(height % 2 == 0, "height is " + height + ", but must be even");
    return frame;
  }

  /**
   * Checks an ARGB image for {@link YUVAlgorithm#ARGB2YUV}, {@link YUVAlgorithm#ARGB2YVU} and
   * {@link CodecDataAlgorithm#ARGB2JPEG}.
   *
   * @param argb the image
   * @param width pixels per row
   * @param height rows
   * @return the image
   * @throws NullPointerException when the image is null
   * @throws IllegalArgumentException when a size is below 1 or too large, or the image is too small
   *     or not direct
   */
  public static ByteBuffer requireArgb(ByteBuffer argb, int width, int height) {
    return requireImage(argb, "argb", width, height, ARGB_HALF_BYTES);
  }

  /** The rows of a plane that is large enough, one at a time. */
  private static final class PlaneRows {
    private final Plane plane;
    private final ByteBuffer view;
    private final int count;
    private final byte[] span; // a row's memory from its first sample to its last

    PlaneRows(Plane plane, String name, int count, int rows) {
      this.plane = Objects.requireNonNull(plane, name + " plane is null");
      this.count = count;
      view = whole(plane.buffer);
      long bytes = (count - 1L) * plane.pixelStride + 1;
      require(plane.rowStride >= bytes, name + " plane has a row stride of " + plane.rowStride
          + ", but " + count + " samples with a pixel stride of " + plane.pixelStride + " take "
          + bytes + " bytes");
      long needed = (rows - 1L) * plane.rowStride + bytes;
      require(view.capacity() >= needed, name + " plane has " + view.capacity() + " bytes, but "
          + count + "x" + rows + " samples with strides of " + plane.rowStride + " and "
          + plane.pixelStride + " take " + needed);
      span = new byte[(int) bytes];
    }

    private void seek(int row) {
      ((Buffer) view).position(row * plane.rowStride);
    }

    /** Reads a row's samples to to[first], to[first + step], ... */
    void read(int row, byte[] to, int first, int step) {
      seek(row);
      if (step == 1 && plane.pixelStride == 1) {
        view.get(to, first, count);
        return;
      }
      view.get(span);
      for (int i = 0; i < count; i++) {
        to[first + i * step] = span[i * plane.pixelStride];
      }
    }

    /** Writes a row's samples from from[first], from[first + step], ... */
    void write(int row, byte[] from, int first, int step) {
      seek(row);
      if (step == 1 && plane.pixelStride == 1) {
        view.put(from, first, count);
        return;
      }
      view.get(span); // the bytes between the samples may belong to another plane
      for (int i = 0; i < count; i++) {
        span[i * plane.pixelStride] = from[first + i * step];
      }
      seek(row);
      view.put(span);
    }
  }

  /**
   * A view of the whole buffer, with a position of its own. Positions are set through Buffer: older
   * devices lack the methods of the same names that return a ByteBuffer.
   */
  private static ByteBuffer whole(ByteBuffer buffer) {
    ByteBuffer view = buffer.duplicate();
    ((Buffer) view).clear();
    return view;
  }

  private static int bytes(int width, int height, int halfBytes) {
    requirePositive(width, "width");
    requirePositive(height, "height");
    long pixels = (long) width * height;
    require(pixels <= (2L * Integer.MAX_VALUE + 1) / halfBytes,
        width + "x" + height + " pixels take more than " + Integer.MAX_VALUE + " bytes");
    return (int) (pixels * halfBytes / 2);
  }

  private static ByteBuffer requireImage(
      ByteBuffer buffer, String name, int width, int height, int halfBytes) {
    Objects.requireNonNull(buffer, name + " is null");
    int needed = bytes(width, height, halfBytes);
    require(buffer.isDirect(), name + " is a heap buffer, but must be direct");
    require(buffer.capacity() >= needed, name + " has " + buffer.capacity() + " bytes, but " + width
        + "x" + height + " pixels take " + needed);
    return buffer;
  }

  private static ByteBuffer requireWritable(ByteBuffer buffer, String name) {
    require(!buffer.isReadOnly(), name + " is read-only, but is to be written");
    return buffer;
  }

  private static int requirePositive(int value, String name) {
    require(value >= 1, name + " is " + value + ", but must be at least 1");
    return value;
  }

  private static void require(boolean ok, String message) {
    if (!ok) {
      throw new IllegalArgumentException(message);
    }
  }
}
