package android.graphics;

/** Stands in for Android's class of this name. */
public class ImageFormat {
  public static final int YUV_420_888 = 35;
}
