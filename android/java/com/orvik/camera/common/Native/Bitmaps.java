package com.orvik.camera.common.Native;

import android.graphics.Bitmap;
import android.graphics.ImageFormat;
import android.graphics.Rect;
import android.media.Image;
import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.nio.ByteBuffer;

/**
 * {@link Images} on Android's own types: effects on a {@link Bitmap}, frames and JPEG files to bitmaps
 * and back, and a camera's {@link Image} to a frame.
 *
 * <pre>{@code
 *   Bitmaps.apply(Effect.PRETTY_SWEET, photo);                       // in place
 *
 *   try (Image image = reader.acquireLatestImage()) {
 *     Bitmaps.pack(image, frame);                                    // the image is free again
 *   }
 *   Bitmaps.decode(frame, preview);
 * }</pre>
 *
 * <p><b>Bitmaps</b> must be of {@link Bitmap.Config#ARGB_8888}, and mutable where they are written.
 * Hardware bitmaps have no memory that a processor can reach: copy them first ({@code
 * bitmap.copy(Bitmap.Config.ARGB_8888, true)}). Pixels are worked on where they are, between a lock and
 * its release; the lock is given back on every path. A view that shows the bitmap has to be
 * invalidated by its owner.
 *
 * <p><b>Transparency.</b> The memory of a bitmap is premultiplied with alpha, and is taken as it is. For
 * opaque bitmaps, such as photos, that makes no difference. In translucent ones an effect changes the
 * premultiplied colours and leaves alpha alone, so that what it brightens may be drawn too light: draw
 * such a bitmap on an opaque one first. JPEG has no alpha: a file shows translucent pixels as they look
 * on black. What is decoded is opaque.
 *
 * <p><b>Bad input</b> throws, as everywhere beside the natives: {@link NullPointerException} for null,
 * {@link IllegalArgumentException} for anything else, with a message that names the argument, what it
 * has and what is needed; nothing is written then. {@link IllegalStateException} says that Android
 * refuses to lock a bitmap, which happens when another thread recycles it meanwhile.
 *
 * <p><b>Threads.</b> Calls may overlap as long as no call writes what another one uses. All of them
 * take their time: none belongs on the main thread. A bitmap must not be recycled, nor an image closed,
 * during a call.
 */
public final class Bitmaps {
  private static final int RGBA_8888 = 1; // among the formats of the native side

  static {
    System.loadLibrary("AlgorithmAndroid");
  }

  private Bitmaps() {}

  /**
   * Applies an effect in place, all of it, with its presets.
   *
   * @param effect the effect, one that needs no picture
   * @param image changed
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bitmap is unfit, or the effect needs a picture
   * @throws IllegalStateException when the bitmap can't be locked
   */
  public static void apply(@NonNull Effect effect, @NonNull Bitmap image) {
    apply(effect, image, EffectSettings.DEFAULT);
  }

  /**
   * Applies an effect in place.
   *
   * @param effect the effect
   * @param image changed
   * @param settings how much of it, parameters, pictures ({@link #copy} makes them of bitmaps), and how
   *     to stop it
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bitmap is unfit, or the settings are not for the effect
   * @throws IllegalStateException when the bitmap can't be locked
   * @throws java.util.concurrent.CancellationException when the call was cancelled; some rows of the
   *     bitmap are changed then
   */
  public static void apply(
      @NonNull Effect effect, @NonNull Bitmap image, @NonNull EffectSettings settings) {
    try (Locked pixels = Locked.toWrite(image, "image")) {
      Images.apply(effect, pixels.memory, pixels.memory, settings);
    }
  }

  /**
   * Makes a bitmap of a frame.
   *
   * @param src the frame, only read
   * @return a new mutable bitmap of the frame's size, opaque
   * @throws NullPointerException when the frame is null
   * @throws IllegalStateException when the bitmap can't be locked
   */
  @NonNull
  public static Bitmap decode(@NonNull Frame src) {
    Checks.notNull(src, "src");
    Bitmap dst = opaque(src.width(), src.height());
    decode(src, dst);
    return dst;
  }

  /**
   * Decodes a frame into a bitmap, as for each frame of a preview.
   *
   * @param src the frame, only read
   * @param dst receives the pixels; of the frame's size
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bitmap is unfit or of another size
   * @throws IllegalStateException when the bitmap can't be locked
   */
  public static void decode(@NonNull Frame src, @NonNull Bitmap dst) {
    try (Locked pixels = Locked.toWrite(dst, "dst")) {
      Images.decode(src, pixels.memory);
    }
  }

  /**
   * Encodes a bitmap as a frame.
   *
   * @param src the bitmap, only read; alpha is ignored
   * @param dst receives the frame; of the bitmap's size
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bitmap is unfit, or the frame is read-only or of another
   *     size
   * @throws IllegalStateException when the bitmap can't be locked
   */
  public static void encode(@NonNull Bitmap src, @NonNull Frame dst) {
    try (Locked pixels = Locked.toRead(src, "src")) {
      Images.encode(pixels.memory, dst);
    }
  }

  /**
   * Makes a bitmap of a JPEG file. An orientation that the file's metadata may state is not applied.
   *
   * @param file the file's bytes, direct
   * @param reduction 1 for the whole size; 2, 4 or 8 for sides that much smaller, which takes
   *     correspondingly less time and memory
   * @return a new mutable bitmap, opaque
   * @throws NullPointerException when the file is null
   * @throws IllegalArgumentException when the bytes are no JPEG file, or the reduction is another one
   * @throws IllegalStateException when the bitmap can't be locked
   */
  @NonNull
  public static Bitmap decodeJpeg(@NonNull ByteBuffer file, int reduction) {
    Images.Size size = Images.jpegSize(file).reducedBy(reduction);
    Bitmap dst = opaque(size.width(), size.height());
    decodeJpeg(file, reduction, dst);
    return dst;
  }

  /**
   * Decodes a JPEG file into a bitmap.
   *
   * @param file the file's bytes, direct
   * @param reduction as above
   * @param dst receives the pixels; of the file's size, reduced
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bytes are no JPEG file, the reduction is another one, or
   *     the bitmap is unfit or of another size
   * @throws IllegalStateException when the bitmap can't be locked
   */
  public static void decodeJpeg(@NonNull ByteBuffer file, int reduction, @NonNull Bitmap dst) {
    try (Locked pixels = Locked.toWrite(dst, "dst")) {
      Images.decodeJpeg(file, pixels.memory, reduction);
    }
  }

  /**
   * Encodes a bitmap as a JPEG file. Translucent pixels look as on black.
   *
   * @param src the bitmap, only read
   * @param quality 0 (smallest file) to 100 (best)
   * @param dst receives the file; direct
   * @return how many bytes the file has
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the bitmap is unfit, the quality is out of its range, or the
   *     buffer is unfit or too small, which says how many bytes are needed
   * @throws IllegalStateException when the bitmap can't be locked
   */
  public static int encodeJpeg(@NonNull Bitmap src, int quality, @NonNull ByteBuffer dst) {
    try (Locked pixels = Locked.toRead(src, "src")) {
      return Images.encodeJpeg(pixels.memory, quality, dst);
    }
  }

  /**
   * Packs what a camera or a decoder delivers into a frame: that part of it which is valid. The image
   * can be closed afterwards.
   *
   * @param src an image of {@link ImageFormat#YUV_420_888}, only read
   * @param dst receives the frame; of the size of the image's {@link Image#getCropRect}
   * @throws NullPointerException when an argument is null
   * @throws IllegalArgumentException when the image has another format, or the frame is read-only or of
   *     another size
   * @throws IllegalStateException when the image is closed
   */
  public static void pack(@NonNull Image src, @NonNull Frame dst) {
    Checks.notNull(src, "src");
    pack(src, src.getCropRect(), 0, dst);
  }

  /**
   * Packs a part of an image into a frame and turns it.
   *
   * @param src an image of {@link ImageFormat#YUV_420_888}, only read
   * @param crop which part, with even sides and coordinates; null for all of it
   * @param degrees 0, 90, 180 or 270, clockwise: the rotation that a camera asks for
   * @param dst receives the frame; of the part's size, width and height exchanged for 90 and 270
   * @throws NullPointerException when the image or the frame is null
   * @throws IllegalArgumentException when the image has another format, the part is odd or not inside
   *     it, the degrees are others, or the frame is read-only or of another size
   * @throws IllegalStateException when the image is closed
   */
  public static void pack(
      @NonNull Image src, @Nullable Rect crop, int degrees, @NonNull Frame dst) {
    Checks.notNull(src, "src");
    Checks.require(src.getFormat() == ImageFormat.YUV_420_888,
        "src has the format " + src.getFormat() + ", but must be YUV_420_888");
    Image.Plane[] planes = src.getPlanes();
    Images.Crop part = crop == null ? null : new Images.Crop(crop.left, crop.top, crop.right - crop.left, crop.bottom - crop.top);
    Images.pack(plane(planes[0]), plane(planes[1]), plane(planes[2]), src.getWidth(), src.getHeight(),
        part, degrees, dst);
  }

  /**
   * A copy of a bitmap's pixels, for effects that take a picture: {@link EffectSettings#picture}.
   *
   * @param src the bitmap, only read
   * @return the pixels in a new direct buffer, which the virtual machine frees like any other
   * @throws NullPointerException when the bitmap is null
   * @throws IllegalArgumentException when the bitmap is unfit
   * @throws IllegalStateException when the bitmap can't be locked
   */
  @NonNull
  public static Pixels copy(@NonNull Bitmap src) {
    try (Locked pixels = Locked.toRead(src, "src")) {
      Pixels from = pixels.memory;
      ByteBuffer copy = ByteBuffer.allocateDirect(from.buffer().capacity());
      copy.duplicate().put(from.buffer());
      return new Pixels(copy, from.width(), from.height(), from.rowStride(), from.order());
    }
  }

  private static CameraFrames.Plane plane(Image.Plane plane) {
    return new CameraFrames.Plane(
        plane.getBuffer(), plane.getRowStride(), plane.getPixelStride());
  }

  /** A bitmap that is drawn without blending. */
  private static Bitmap opaque(int width, int height) {
    Bitmap bitmap = Bitmap.createBitmap(width, height, Bitmap.Config.ARGB_8888);
    bitmap.setHasAlpha(false);
    return bitmap;
  }

  /** A bitmap's pixels, from the lock to its release. */
  private static final class Locked implements AutoCloseable {
    final Pixels memory;
    private final Bitmap bitmap;

    private Locked(Bitmap bitmap, String name) {
      this.bitmap = bitmap;
      int[] layout = new int[5]; // result, width, height, row stride, format
      ByteBuffer buffer = lock(bitmap, layout);
      require(layout[0] == 0, name + " can't be locked: Android says " + layout[0]);
      require(buffer != null,
          name + " has the native format " + layout[4] + ", but must have " + RGBA_8888);
      Pixels pixels = null;
      try {
        pixels = new Pixels(buffer, layout[1], layout[2], layout[3], Pixels.Order.RGBA);
      } finally {
        if (pixels == null) {
          unlock(bitmap);
        }
      }
      memory = pixels;
    }

    static Locked toRead(Bitmap bitmap, String name) {
      return new Locked(usable(bitmap, name), name);
    }

    static Locked toWrite(Bitmap bitmap, String name) {
      Checks.require(
          usable(bitmap, name).isMutable(), name + " is immutable, but is to be written");
      return new Locked(bitmap, name);
    }

    private static Bitmap usable(Bitmap bitmap, String name) {
      Checks.notNull(bitmap, name);
      Checks.require(!bitmap.isRecycled(), name + " is recycled");
      Checks.require(bitmap.getConfig() == Bitmap.Config.ARGB_8888,
          name + " has the configuration " + bitmap.getConfig() + ", but must have ARGB_8888");
      return bitmap;
    }

    private static void require(boolean ok, String message) {
      if (!ok) {
        throw new IllegalStateException(message);
      }
    }

    @Override
    public void close() {
      int result = unlock(bitmap);
      require(result == 0, "the bitmap can't be unlocked: Android says " + result);
    }
  }

  private static native ByteBuffer lock(Bitmap bitmap, int[] layout);

  private static native int unlock(Bitmap bitmap);
}
