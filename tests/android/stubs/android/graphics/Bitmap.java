package android.graphics;

/** Stands in for Android's class of this name: what is used of it. Its pixels are locked by jnigraphics.cpp. */
public final class Bitmap {
  /** Its configurations, as of API level 26. */
  public enum Config { ALPHA_8, RGB_565, ARGB_4444, ARGB_8888, RGBA_F16, HARDWARE }

  final Config config;
  final int width;
  final int height;
  final boolean mutable;
  boolean recycled;
  boolean hasAlpha = true;
  // Of the native side:
  int rowBytes;
  byte[] pixels; // while unlocked
  int locks;
  long locked; // where they are while locked
  String failing = ""; // the function that fails, and what it returns
  int result;

  Bitmap(int width, int height, Config config, int rowBytes, boolean mutable) {
    this.width = width;
    this.height = height;
    this.config = config;
    this.rowBytes = rowBytes;
    this.mutable = mutable;
    pixels = new byte[rowBytes * height];
  }

  public static Bitmap createBitmap(int width, int height, Config config) {
    return new Bitmap(width, height, config, 4 * width + BitmapControl.padding, true);
  }

  public Config getConfig() {
    return config;
  }

  public int getWidth() {
    return width;
  }

  public int getHeight() {
    return height;
  }

  public boolean isMutable() {
    return mutable;
  }

  public boolean isRecycled() {
    return recycled;
  }

  public void setHasAlpha(boolean hasAlpha) {
    this.hasAlpha = hasAlpha;
  }
}
