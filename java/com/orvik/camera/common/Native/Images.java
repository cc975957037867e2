package com.orvik.camera.common.Native;

import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.channels.WritableByteChannel;
import java.util.function.IntConsumer;

/**
 * Everything that the library does to images, from the caller's buffers into the caller's buffers.
 *
 * <pre>{@code
 *   Pixels photo = Pixels.allocate(width, height, Pixels.Order.RGBA);        // once
 *   Images.decode(Frame.of(frame, width, height, Frame.Chroma.NV21), photo); // each time
 *   Images.apply(Effect.PRETTY_SWEET, photo);
 *   int bytes = Images.encodeJpeg(photo, 90, file);
 * }</pre>
 *
 * <p>Unlike the natives of the four classes beside it, these methods take rows with padding and both
 * orders of bytes, make no result that would stay in memory, log nothing, and throw.
 *
 * <h2>Buffers</h2>
 *
 * <p>All are direct. Images start at index 0; position and limit are neither used nor changed. What
 * lies between rows is never touched. Where one method takes several buffers, one that is written
 * must not share memory with another, except that a source and a destination may be <b>the same
 * image</b> (address, size and row stride) where the method says so.
 *
 * <h2>Bad input</h2>
 *
 * <p>{@link NullPointerException} for null, {@link IllegalArgumentException} for anything else, with a
 * message that names the argument, what it has and what is needed. In both cases nothing is written.
 * {@link OutOfMemoryError} when there is no memory for work rows, for the few effects that need the
 * whole image, or for a JPEG of many scans; nothing is written then, either, unless a method says
 * otherwise.
 *
 * <h2>Threads</h2>
 *
 * <p>All methods may be called on any thread, return when the work is done, and may overlap, as long
 * as no call writes a buffer that another one uses. Effects run on the library's four threads while
 * the caller waits, a band of rows at a time: between two bands a preview's frame goes first, so that
 * it never waits longer than one band for a photo. Everything else runs on the calling thread. Keep
 * long calls off an application's main thread.
 */
public final class Images {
  static {
    System.loadLibrary("Algorithm");
  }

  private static final int MOST_RESIZED = 32767;
  private static final int MOST_WEIGHT = 256;
  private static final int MOST_QUALITY = 100;
  private static final double[] NO_VALUES = {};

  private Images() {}

  /** A rectangle of an image. */
  public static final class Crop {
    private final int left;
    private final int top;
    private final int width;
    private final int height;

    /**
     * A rectangle; whether it is inside an image is checked when it is used.
     *
     * @param left first column, at least 0
     * @param top first row, at least 0
     * @param width columns, at least 1
     * @param height rows, at least 1
     * @throws IllegalArgumentException when a number is below that
     */
    public Crop(int left, int top, int width, int height) {
      this.left = Checks.atLeast(left, 0, "left");
      this.top = Checks.atLeast(top, 0, "top");
      this.width = Checks.atLeast(width, 1, "width");
      this.height = Checks.atLeast(height, 1, "height");
    }

    /**
     * The first column.
     *
     * @return the column, at least 0
     */
    public int left() {
      return left;
    }

    /**
     * The first row.
     *
     * @return the row, at least 0
     */
    public int top() {
      return top;
    }

    /**
     * Columns.
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

    void requireInside(String name, int imageWidth, int imageHeight) {
      Checks.require((long) left + width <= imageWidth && (long) top + height <= imageHeight,
          name + " is " + Checks.size(width, height) + " pixels at (" + left + ", " + top
              + "), but the image has " + Checks.size(imageWidth, imageHeight));
    }
  }

  /** The size of an image in pixels. */
  public static final class Size {
    private final int width;
    private final int height;

    Size(int width, int height) {
      this.width = width;
      this.height = height;
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
     * The size that {@link Images#decodeJpeg} makes of a file of this size.
     *
     * @param reduction 1, 2, 4 or 8
     * @return both sides divided by that and rounded up
     * @throws IllegalArgumentException for another reduction
     */
    @NonNull
    public Size reducedBy(int reduction) {
      checkReduction(reduction);
      return new Size(part(width, reduction), part(height, reduction));
    }

    private static int part(int side, int reduction) {
      return (side - 1) / reduction + 1;
    }

    @Override
    public boolean equals(Object other) {
      return other instanceof Size && ((Size) other).width == width && ((Size) other).height == height;
    }

    @Override
    public int hashCode() {
      return 31 * width + height;
    }

    @Override
    public String toString() {
      return Checks.size(width, height);
    }
  }

  // Effects

  /**
   * Applies a whole effect, in place, with its parameters at their presets.
   *
   * @param effect one that needs no picture
   * @param image changed in place; alpha keeps its values
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the effect needs a picture, or the image is read-only
   */
  public static void apply(@NonNull Effect effect, @NonNull Pixels image) {
    apply(effect, image, image, EffectSettings.DEFAULT);
  }

  /**
   * Applies an effect. The colours are those that the native routine makes of packed rows, mixed with
   * the source's by the settings' amount; alpha is the source's. Pixels that a routine leaves alone,
   * such as the outermost ones of drawings, are the source's.
   *
   * @param effect the effect
   * @param src the image; only read, unless it is dst
   * @param dst receives as many pixels; may be the same image as src
   * @param settings what goes with the effect
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the sizes differ, dst is read-only, buffers share memory
   *     other than as one image, the settings have a name that the effect has not, lack a picture,
   *     or have a value or picture that doesn't fit
   * @throws java.util.concurrent.CancellationException when the settings' cancellation stopped the
   *     call; some bands of dst have then been written
   */
  public static void apply(@NonNull Effect effect, @NonNull Pixels src, @NonNull Pixels dst,
      @NonNull EffectSettings settings) {
    Checks.notNull(effect, "effect");
    Checks.notNull(src, "src");
    writable(dst, "dst");
    Checks.sameSize("dst", dst.width(), dst.height(), src.width(), src.height());
    EffectCall call = new EffectCall(effect, settings, false);
    run(effect.operation(), src.buffer(), src.shape(), dst.buffer(), dst.shape(), call.amount,
        call.values, call.pictures, call.pictureShapes, call.cancellation);
  }

  /**
   * Applies an effect to a frame, in place: a preview's way. For a Pretty effect, the whole of it, and
   * an NV21 frame, the bytes are those that {@link EffectAlgorithm#Effect} makes of the same frame
   * with packed rows; the settings' picture then takes the place of the device's, which is used where
   * the settings have none. In all other cases they are those of {@link #decode}, {@code apply} and
   * {@link #encode}.
   *
   * @param effect the effect
   * @param frame changed in place
   * @param settings what goes with the effect
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the frame is read-only, or as for pixels
   * @throws java.util.concurrent.CancellationException when the settings' cancellation stopped the
   *     call; some bands of the frame have then been changed
   */
  public static void apply(
      @NonNull Effect effect, @NonNull Frame frame, @NonNull EffectSettings settings) {
    Checks.notNull(effect, "effect");
    writable(frame, "frame");
    boolean onPipeline = effect.onPipeline() && frame.chroma() == Frame.Chroma.NV21
        && Checks.notNull(settings, "settings").amount() == 1;
    EffectCall call = new EffectCall(effect, settings, onPipeline);
    runOnFrame(effect.operation(), onPipeline, frame.buffer(), frame.shape(), call.amount, call.values,
        call.pictures, call.pictureShapes, call.cancellation);
  }

  // Frames

  /**
   * Decodes a frame: BT.601, video range, as {@link YUVAlgorithm} does.
   *
   * @param src the frame; only read
   * @param dst receives the pixels, alpha 255
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the sizes differ, dst is read-only, or the buffers share
   *     memory
   */
  public static void decode(@NonNull Frame src, @NonNull Pixels dst) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    Checks.sameSize("dst", dst.width(), dst.height(), src.width(), src.height());
    decode(src.buffer(), src.shape(), dst.buffer(), dst.shape());
  }

  /**
   * Encodes pixels to a frame: BT.601, video range, the chroma of a block from its bottom-left pixel,
   * as {@link YUVAlgorithm} does.
   *
   * @param src the pixels, of even size; only read; alpha is ignored
   * @param dst receives the frame
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the sizes differ, dst is read-only, or the buffers share
   *     memory
   */
  public static void encode(@NonNull Pixels src, @NonNull Frame dst) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    Checks.sameSize("dst", dst.width(), dst.height(), src.width(), src.height());
    encode(src.buffer(), src.shape(), dst.buffer(), dst.shape());
  }

  /**
   * Packs a camera's planes into a frame of either chroma order, and crops and turns it on the way.
   * Where u and v interleave in one memory already, as cameras mostly deliver them, whole rows are
   * copied.
   *
   * @param y the luma plane, width &times; height samples, direct; only read
   * @param u the U plane, width / 2 &times; height / 2 samples, direct; only read
   * @param v the V plane, likewise
   * @param width pixels per row of the planes, even
   * @param height rows of the planes, even
   * @param crop the part to take, all four numbers even; null for all of it
   * @param degrees how far to turn it, clockwise: 0, 90, 180 or 270
   * @param dst receives the frame, whose size is the part's, or for 90 and 270 that with its sides
   *     exchanged
   * @throws NullPointerException when a plane or dst is null
   * @throws IllegalArgumentException when a size is odd or below 2, a plane is not direct or too
   *     small, the crop is odd or not inside, dst is read-only or of another size, or dst shares
   *     memory with a plane
   */
  public static void pack(@NonNull CameraFrames.Plane y, @NonNull CameraFrames.Plane u,
      @NonNull CameraFrames.Plane v, int width, int height, @Nullable Crop crop, int degrees,
      @NonNull Frame dst) {
    Checks.even(Checks.atLeast(width, 2, "width"), "width");
    Checks.even(Checks.atLeast(height, 2, "height"), "height");
    checkPlane(y, "y", width, height);
    checkPlane(u, "u", width / 2, height / 2);
    checkPlane(v, "v", width / 2, height / 2);
    Crop part = crop != null ? crop : new Crop(0, 0, width, height);
    part.requireInside("crop", width, height);
    Checks.even(part.left(), "crop.left");
    Checks.even(part.top(), "crop.top");
    Checks.even(part.width(), "crop.width");
    Checks.even(part.height(), "crop.height");
    writable(dst, "dst");
    checkTurn(degrees, true);
    checkTurned("dst", dst.width(), dst.height(), part.width(), part.height(), degrees);
    int[] strides = {
      y.rowStride(), y.pixelStride(), u.rowStride(), u.pixelStride(), v.rowStride(), v.pixelStride()
    };
    pack(y.buffer(), u.buffer(), v.buffer(), strides, width, height,
        new int[] {part.left(), part.top(), part.width(), part.height()}, degrees, dst.buffer(),
        dst.shape());
  }

  // Geometry

  /**
   * Turns an image.
   *
   * @param src the image; only read
   * @param degrees how far, clockwise: 90, 180 or 270
   * @param dst receives the pixels; of src's size, for 90 and 270 with its sides exchanged
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException when the degrees are others, dst is of another size or
   *     read-only, or the buffers share memory
   */
  public static void rotate(@NonNull Pixels src, int degrees, @NonNull Pixels dst) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    checkTurn(degrees, false);
    checkTurned("dst", dst.width(), dst.height(), src.width(), src.height(), degrees);
    rotatePixels(src.buffer(), src.shape(), degrees, dst.buffer(), dst.shape());
  }

  /**
   * Turns a frame. Chroma pairs are moved as a unit; nothing is resampled.
   *
   * @param src the frame; only read
   * @param degrees how far, <b>clockwise</b> (other than {@link YUVAlgorithm#rotateYUV}): 90, 180 or
   *     270
   * @param dst receives the frame; of src's size, for 90 and 270 with its sides exchanged
   * @throws NullPointerException when a frame is null
   * @throws IllegalArgumentException when the degrees are others, dst is of another size or
   *     read-only, or the buffers share memory
   */
  public static void rotate(@NonNull Frame src, int degrees, @NonNull Frame dst) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    checkTurn(degrees, false);
    checkTurned("dst", dst.width(), dst.height(), src.width(), src.height(), degrees);
    rotateFrame(src.buffer(), src.shape(), degrees, dst.buffer(), dst.shape());
  }

  /**
   * Resizes an image to dst's size: bilinear, 16 fractional bits, truncating, the bytes of the native
   * routine {@code Resize}. Alpha becomes 255.
   *
   * @param src the image, less than 32768 pixels wide and tall; only read. One whose address or row
   *     stride is no multiple of 4 is copied first
   * @param dst receives the pixels
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException when src is larger than that, dst is read-only, or the buffers
   *     share memory
   */
  public static void resize(@NonNull Pixels src, @NonNull Pixels dst) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    Checks.require(src.width() <= MOST_RESIZED && src.height() <= MOST_RESIZED, "src has "
        + Checks.size(src.width(), src.height()) + " pixels, but no side may pass " + MOST_RESIZED);
    resize(src.buffer(), src.shape(), dst.buffer(), dst.shape());
  }

  /**
   * Blurs towards both sides: a box blur whose radius grows from 0 in the middle column to 24. The
   * same as {@link Effect#BLUR}.
   *
   * @param src the image; only read, unless it is dst
   * @param dst receives as many pixels, alpha as in src; may be the same image as src
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code apply}
   */
  public static void blur(@NonNull Pixels src, @NonNull Pixels dst) {
    apply(Effect.BLUR, src, dst, EffectSettings.DEFAULT);
  }

  /**
   * Blurs half as much, the centre pixel counting five times. The same as {@link Effect#ACTIVE_BLUR}.
   *
   * @param src the image; only read, unless it is dst
   * @param dst receives as many pixels, alpha as in src; may be the same image as src
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code apply}
   */
  public static void activeBlur(@NonNull Pixels src, @NonNull Pixels dst) {
    apply(Effect.ACTIVE_BLUR, src, dst, EffectSettings.DEFAULT);
  }

  // Blends: all four bytes of a pixel, alpha like the colours

  /**
   * Mixes an image into another: {@code (dst x (256 - weight) + src x weight) / 256}.
   *
   * @param src the image to mix in; only read, unless it is dst
   * @param dst changed in place; of the same size
   * @param weight src's share, 0 to 256
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException when the weight is out of its range, the sizes differ, dst is
   *     read-only, or buffers share memory other than as one image
   */
  public static void mix(@NonNull Pixels src, @NonNull Pixels dst, int weight) {
    Checks.within(weight, 0, MOST_WEIGHT, "weight");
    blend("mix", src, dst, new double[] {weight});
  }

  /**
   * Keeps the greater byte of two images.
   *
   * @param src the image to compare with; only read, unless it is dst
   * @param dst changed in place; of the same size
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code mix}
   */
  public static void lighten(@NonNull Pixels src, @NonNull Pixels dst) {
    blend("lighten", src, dst, NO_VALUES);
  }

  /**
   * Keeps the smaller byte of two images.
   *
   * @param src the image to compare with; only read, unless it is dst
   * @param dst changed in place; of the same size
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code mix}
   */
  public static void darken(@NonNull Pixels src, @NonNull Pixels dst) {
    blend("darken", src, dst, NO_VALUES);
  }

  /**
   * Copies a rectangle to the same place in another image.
   *
   * @param src the image to take it from; only read, unless it is dst
   * @param dst changed in place; of the same size
   * @param area the rectangle, inside the images
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the rectangle is not inside, or as {@code mix}
   */
  public static void paste(@NonNull Pixels src, @NonNull Pixels dst, @NonNull Crop area) {
    Checks.notNull(src, "src");
    Checks.notNull(area, "area");
    area.requireInside("area", src.width(), src.height());
    writable(dst, "dst");
    Checks.sameSize("dst", dst.width(), dst.height(), src.width(), src.height());
    paste(src.buffer(), src.shape(), dst.buffer(), dst.shape(), area.left(), area.top(), area.width(),
        area.height());
  }

  /**
   * What two of three images agree on: for each byte the second or the third, whichever is nearer to
   * the first; the third when both are equally near.
   *
   * @param src the first image; only read, unless it is dst
   * @param second the second image; only read
   * @param third the third image; only read
   * @param dst receives the pixels; may be the same image as src. All four are of one size
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code mix}
   */
  public static void background(@NonNull Pixels src, @NonNull Pixels second, @NonNull Pixels third,
      @NonNull Pixels dst) {
    Checks.notNull(second, "second");
    Checks.notNull(third, "third");
    blend("background", src, dst, NO_VALUES, second, third);
  }

  /**
   * What stands out in one of three images: each byte becomes whichever of the three is farthest from
   * their {@link #background}; of equally far ones the first in the order dst, src, third.
   *
   * @param src the second image; only read, unless it is dst
   * @param third the third image; only read
   * @param dst the first image, changed in place. All three are of one size
   * @throws NullPointerException when an image is null
   * @throws IllegalArgumentException as {@code mix}
   */
  public static void farthest(@NonNull Pixels src, @NonNull Pixels third, @NonNull Pixels dst) {
    Checks.notNull(third, "third");
    blend("farthest", src, dst, NO_VALUES, third);
  }

  // JPEG

  /**
   * The size of a JPEG's image, from its header; nothing is decoded.
   *
   * @param file the bytes of the file; what follows the file is ignored
   * @return the size
   * @throws NullPointerException when the file is null
   * @throws IllegalArgumentException when it is not direct or no JPEG
   */
  @NonNull
  public static Size jpegSize(@NonNull ByteBuffer file) {
    Checks.direct(file, "file");
    int[] size = new int[2];
    jpegSize(file, size);
    return new Size(size[0], size[1]);
  }

  /**
   * Decodes a JPEG, also reduced in size, which takes less time.
   *
   * @param file the bytes of the file; only read
   * @param dst receives the pixels, alpha 255; exactly of the size that is returned
   * @param reduction 1, 2, 4 or 8: what the sides are divided by
   * @return {@code jpegSize(file).reducedBy(reduction)}
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the file is not direct, no JPEG or refused as {@link
   *     CodecDataAlgorithm} does, the reduction is another, or dst is of another size, read-only or
   *     shares memory with the file
   */
  @NonNull
  public static Size decodeJpeg(@NonNull ByteBuffer file, @NonNull Pixels dst, int reduction) {
    Checks.direct(file, "file");
    writable(dst, "dst");
    checkReduction(reduction);
    decodeJpeg(file, reduction, dst.buffer(), dst.shape());
    return new Size(dst.width(), dst.height());
  }

  /**
   * Encodes pixels to a JPEG.
   *
   * @param src the pixels; only read; alpha is ignored
   * @param quality 0 (smallest file) to 100 (best)
   * @param dst receives the bytes of the file, from index 0 on
   * @return how many
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the quality is out of its range, src is larger than a JPEG
   *     can be, or dst is not direct, read-only, shares memory with src or is too small: the message
   *     then says how many bytes the file has, of which dst holds the first
   */
  public static int encodeJpeg(@NonNull Pixels src, int quality, @NonNull ByteBuffer dst) {
    Checks.notNull(src, "src");
    Checks.within(quality, 0, MOST_QUALITY, "quality");
    Checks.writable(Checks.direct(dst, "dst"), "dst");
    return encodeJpeg(src.buffer(), src.shape(), quality, dst);
  }

  /**
   * Applies an effect to the photo in a JPEG file. With {@link Effect#independentRows} the image is
   * never in memory as a whole.
   *
   * @param effect the effect
   * @param settings what goes with it
   * @param file the bytes of the file; only read
   * @param quality of the result, 0 to 100
   * @param dst receives the bytes of the result, from index 0 on
   * @return how many
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException as {@code decodeJpeg}, {@code encodeJpeg} and {@code apply}
   * @throws java.util.concurrent.CancellationException when the settings' cancellation stopped the
   *     call; dst then holds part of a file
   */
  public static int applyToJpeg(@NonNull Effect effect, @NonNull EffectSettings settings,
      @NonNull ByteBuffer file, int quality, @NonNull ByteBuffer dst) {
    Checks.direct(file, "file");
    Checks.within(quality, 0, MOST_QUALITY, "quality");
    Checks.writable(Checks.direct(dst, "dst"), "dst");
    Checks.notNull(effect, "effect");
    EffectCall call = new EffectCall(effect, settings, false);
    return applyToJpeg(effect.operation(), call.amount, call.values, call.pictures,
        call.pictureShapes, call.cancellation, file, quality, dst, null);
  }

  /**
   * The same, from one channel to another, such as from a photo to a new file.
   *
   * @param effect the effect
   * @param settings what goes with it
   * @param in the file, read from its position to its end
   * @param out receives the result in pieces; a channel that blocks
   * @param quality of the result, 0 to 100
   * @throws IOException from the channels, as they threw it; out has then part of a file
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException as above; nothing is written then
   * @throws java.util.concurrent.CancellationException when the settings' cancellation stopped the
   *     call; out has then part of a file
   */
  public static void applyToJpeg(@NonNull Effect effect, @NonNull EffectSettings settings,
      @NonNull FileChannel in, @NonNull WritableByteChannel out, int quality) throws IOException {
    Checks.notNull(effect, "effect");
    Checks.notNull(in, "in");
    Checks.notNull(out, "out");
    Checks.within(quality, 0, MOST_QUALITY, "quality");
    EffectCall call = new EffectCall(effect, settings, false);
    ByteBuffer file = Channels.readAll(in);
    Channels.Sink sink = new Channels.Sink(out);
    sink.during(() -> applyToJpeg(effect.operation(), call.amount, call.values, call.pictures,
        call.pictureShapes, call.cancellation, file, quality, sink.buffer(), sink));
  }

  private static void blend(
      String operation, Pixels src, Pixels dst, double[] values, Pixels... pictures) {
    Checks.notNull(src, "src");
    writable(dst, "dst");
    Checks.sameSize("dst", dst.width(), dst.height(), src.width(), src.height());
    for (int i = 0; i < pictures.length; i++) {
      String name = i == pictures.length - 1 ? "third" : "second";
      Checks.sameSize(name, pictures[i].width(), pictures[i].height(), src.width(), src.height());
    }
    run(operation, src.buffer(), src.shape(), dst.buffer(), dst.shape(), 1, values,
        EffectCall.buffers(pictures), EffectCall.shapes(pictures), null);
  }

  private static void writable(Pixels image, String name) {
    Checks.writable(Checks.notNull(image, name).buffer(), name);
  }

  private static void writable(Frame frame, String name) {
    Checks.writable(Checks.notNull(frame, name).buffer(), name);
  }

  private static void checkReduction(int reduction) {
    Checks.require(reduction == 1 || reduction == 2 || reduction == 4 || reduction == 8,
        "reduction is " + reduction + ", but must be 1, 2, 4 or 8");
  }

  private static void checkTurn(int degrees, boolean zeroToo) {
    Checks.require(degrees == 90 || degrees == 180 || degrees == 270 || (zeroToo && degrees == 0),
        "degrees is " + degrees + ", but must be " + (zeroToo ? "0, " : "") + "90, 180 or 270");
  }

  private static void checkTurned(
      String name, int width, int height, int srcWidth, int srcHeight, int degrees) {
    boolean onItsSide = degrees % 180 != 0;
    Checks.sameSize(name, width, height, onItsSide ? srcHeight : srcWidth,
        onItsSide ? srcWidth : srcHeight);
  }

  private static void checkPlane(CameraFrames.Plane plane, String name, int count, int rows) {
    Checks.notNull(plane, name);
    Checks.direct(plane.buffer(), name);
    long bytes = (count - 1L) * plane.pixelStride() + 1;
    Checks.stride(plane.rowStride(), bytes, name + ".rowStride",
        count + " samples with a pixel stride of " + plane.pixelStride());
    Checks.holds(plane.buffer(), name, 0, rows, plane.rowStride(), bytes, Checks.size(count, rows)
        + " samples with strides of " + plane.rowStride() + " and " + plane.pixelStride());
  }

  // What is left to the natives, which throw the same exceptions: whether memory is shared, values
  // that don't go with the image, and whether bytes are a JPEG.

  private static native void run(String operation, ByteBuffer src, int[] srcShape, ByteBuffer dst,
      int[] dstShape, double amount, double[] values, ByteBuffer[] pictures, int[] pictureShapes,
      ByteBuffer cancellation);

  private static native void runOnFrame(String operation, boolean onPipeline, ByteBuffer frame,
      int[] shape, double amount, double[] values, ByteBuffer[] pictures, int[] pictureShapes,
      ByteBuffer cancellation);

  private static native void decode(ByteBuffer src, int[] srcShape, ByteBuffer dst, int[] dstShape);

  private static native void encode(ByteBuffer src, int[] srcShape, ByteBuffer dst, int[] dstShape);

  private static native void pack(ByteBuffer y, ByteBuffer u, ByteBuffer v, int[] strides, int width,
      int height, int[] crop, int degrees, ByteBuffer dst, int[] dstShape);

  private static native void rotatePixels(
      ByteBuffer src, int[] srcShape, int degrees, ByteBuffer dst, int[] dstShape);

  private static native void rotateFrame(
      ByteBuffer src, int[] srcShape, int degrees, ByteBuffer dst, int[] dstShape);

  private static native void resize(ByteBuffer src, int[] srcShape, ByteBuffer dst, int[] dstShape);

  private static native void paste(ByteBuffer src, int[] srcShape, ByteBuffer dst, int[] dstShape,
      int left, int top, int width, int height);

  private static native void jpegSize(ByteBuffer file, int[] size);

  private static native void decodeJpeg(ByteBuffer file, int reduction, ByteBuffer dst, int[] dstShape);

  private static native int encodeJpeg(ByteBuffer src, int[] srcShape, int quality, ByteBuffer dst);

  /** With a sink, dst is filled again and again, and the sink told each time how many bytes it has. */
  private static native int applyToJpeg(String operation, double amount, double[] values,
      ByteBuffer[] pictures, int[] pictureShapes, ByteBuffer cancellation, ByteBuffer file, int quality,
      ByteBuffer dst, IntConsumer sink);
}
