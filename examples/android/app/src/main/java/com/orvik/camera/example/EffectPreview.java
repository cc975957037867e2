package com.orvik.camera.example;

import android.graphics.Bitmap;
import android.media.Image;
import android.widget.ImageView;
import androidx.annotation.NonNull;
import androidx.annotation.OptIn;
import androidx.camera.core.ExperimentalGetImage;
import androidx.camera.core.ImageAnalysis;
import androidx.camera.core.ImageProxy;
import com.orvik.camera.common.Native.Bitmaps;
import com.orvik.camera.common.Native.Effect;
import com.orvik.camera.common.Native.Frame;
import java.util.concurrent.ArrayBlockingQueue;
import java.util.concurrent.BlockingQueue;

/**
 * Shows the camera's frames with an effect. Frames are worked on by the one thread that calls {@link
 * #analyze}; the main thread only shows finished bitmaps. Nothing is allocated for a frame but when
 * the size changes.
 */
final class EffectPreview implements ImageAnalysis.Analyzer {
  private static final int BITMAPS = 3; // one shown, one on its way there, one being worked on

  private final ImageView view;
  private volatile Effect effect = Effect.PRETTY_SWEET;
  private Buffers buffers; // the camera's thread
  private Bitmap shown; // the main thread

  /** What frames of one size are worked on in. */
  private static final class Buffers {
    final Frame frame;
    final BlockingQueue<Bitmap> free = new ArrayBlockingQueue<>(BITMAPS);

    Buffers(int width, int height) {
      frame = Frame.allocate(width, height, Frame.Chroma.NV21);
      for (int i = 0; i < BITMAPS; i++) {
        free.add(Bitmap.createBitmap(width, height, Bitmap.Config.ARGB_8888));
      }
    }
  }

  EffectPreview(ImageView view) {
    this.view = view;
  }

  void choose(Effect chosen) {
    effect = chosen;
  }

  Effect effect() {
    return effect;
  }

  @Override
  @OptIn(markerClass = ExperimentalGetImage.class)
  public void analyze(@NonNull ImageProxy proxy) {
    // Closing it in any case is what keeps frames coming: the camera has only a few.
    try (proxy) {
      Image image = proxy.getImage();
      if (image == null) {
        return;
      }
      int degrees = proxy.getImageInfo().getRotationDegrees(); // clockwise, until it is upright
      prepare(degrees % 180 == 0 ? image.getWidth() : image.getHeight(),
          degrees % 180 == 0 ? image.getHeight() : image.getWidth());
      Bitmaps.pack(image, null, degrees, buffers.frame);
    }
    Buffers used = buffers;
    Bitmap bitmap = used.free.poll();
    if (bitmap == null) {
      return; // the main thread has not shown the last ones yet: leave this frame out
    }
    Bitmaps.decode(used.frame, bitmap);
    Bitmaps.apply(effect, bitmap);
    view.post(() -> show(bitmap, used));
  }

  private void prepare(int width, int height) {
    if (buffers == null || buffers.frame.width() != width || buffers.frame.height() != height) {
      buffers = new Buffers(width, height);
    }
  }

  /** On the main thread. */
  private void show(Bitmap bitmap, Buffers used) {
    Bitmap before = shown;
    shown = bitmap;
    view.setImageBitmap(bitmap);
    if (before != null && before.getWidth() == bitmap.getWidth() && before.getHeight() == bitmap.getHeight()) {
      used.free.offer(before);
    }
  }
}
