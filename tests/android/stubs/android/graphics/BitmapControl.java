package android.graphics;

/** What tests tell the stand-in for bitmaps, and ask of it. */
public final class BitmapControl {
  /** Bytes behind each row of the next bitmaps. */
  public static int padding;

  static {
    System.loadLibrary("jnigraphics");
  }

  private BitmapControl() {}

  /** A bitmap of those pixels. */
  public static Bitmap of(int width, int height, Bitmap.Config config, boolean mutable, byte[] pixels) {
    Bitmap bitmap = new Bitmap(width, height, config, pixels.length / height, mutable);
    bitmap.pixels = pixels.clone();
    return bitmap;
  }

  public static Bitmap recycled(Bitmap bitmap) {
    bitmap.recycled = true;
    return bitmap;
  }

  /** From now on that function of the native side fails, or it says another format or stride. */
  public static Bitmap failing(Bitmap bitmap, String function, int result) {
    bitmap.failing = function;
    bitmap.result = result;
    return bitmap;
  }

  public static int rowBytes(Bitmap bitmap) {
    return bitmap.rowBytes;
  }

  public static byte[] pixels(Bitmap bitmap) {
    return bitmap.pixels;
  }

  public static boolean hasAlpha(Bitmap bitmap) {
    return bitmap.hasAlpha;
  }

  /** Locks of all bitmaps that have not been given back. */
  public static native int openLocks();

  /** Locks of all bitmaps so far. */
  public static native int locks();
}
