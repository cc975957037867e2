package android.media;

import android.graphics.Rect;
import java.nio.ByteBuffer;

/** Stands in for Android's class of this name, with what its methods answer. */
public abstract class Image implements AutoCloseable {
  /** A plane of samples. */
  public abstract static class Plane {
    private final ByteBuffer buffer;
    private final int rowStride;
    private final int pixelStride;

    protected Plane(ByteBuffer buffer, int rowStride, int pixelStride) {
      this.buffer = buffer;
      this.rowStride = rowStride;
      this.pixelStride = pixelStride;
    }

    public ByteBuffer getBuffer() {
      return buffer;
    }

    public int getRowStride() {
      return rowStride;
    }

    public int getPixelStride() {
      return pixelStride;
    }
  }

  private final int format;
  private final int width;
  private final int height;
  private final Rect crop;
  private final Plane[] planes;

  protected Image(int format, int width, int height, Rect crop, Plane... planes) {
    this.format = format;
    this.width = width;
    this.height = height;
    this.crop = crop;
    this.planes = planes;
  }

  public int getFormat() {
    return format;
  }

  public int getWidth() {
    return width;
  }

  public int getHeight() {
    return height;
  }

  public Plane[] getPlanes() {
    return planes;
  }

  public Rect getCropRect() {
    return crop;
  }

  @Override
  public void close() {}
}
