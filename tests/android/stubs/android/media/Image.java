package android.media;

import android.graphics.Rect;
import java.nio.ByteBuffer;

/** Stands in for Android's class of this name. */
public abstract class Image implements AutoCloseable {
  /** A plane of samples. */
  public abstract static class Plane {
    public abstract ByteBuffer getBuffer();

    public abstract int getRowStride();

    public abstract int getPixelStride();
  }

  public abstract int getFormat();

  public abstract int getWidth();

  public abstract int getHeight();

  public abstract Plane[] getPlanes();

  public Rect getCropRect() {
    return new Rect(0, 0, getWidth(), getHeight());
  }

  @Override
  public abstract void close();
}
