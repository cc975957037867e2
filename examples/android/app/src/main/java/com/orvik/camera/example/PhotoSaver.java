package com.orvik.camera.example;

import android.content.ContentResolver;
import android.content.ContentValues;
import android.content.Context;
import android.net.Uri;
import android.os.Environment;
import android.provider.MediaStore;
import android.widget.Toast;
import androidx.annotation.NonNull;
import androidx.camera.core.ImageCapture;
import androidx.camera.core.ImageCaptureException;
import com.orvik.camera.common.Native.Effect;
import com.orvik.camera.common.Native.EffectSettings;
import com.orvik.camera.common.Native.Images;
import java.io.File;
import java.io.IOException;
import java.io.OutputStream;
import java.nio.channels.Channels;
import java.nio.channels.FileChannel;
import java.nio.file.StandardOpenOption;
import java.util.concurrent.Executor;
import java.util.concurrent.Executors;

/**
 * Takes photos and saves them with an effect, on a thread of its own. The camera's file goes through
 * the effect into the gallery's in bands, so that a photo is nowhere in memory as a whole; it keeps
 * its metadata, with them the orientation.
 */
final class PhotoSaver {
  private static final int QUALITY = 95;
  // For the process, not for an activity: a photo that was taken is saved.
  private static final Executor THREAD = Executors.newSingleThreadExecutor();

  private final Context context;

  PhotoSaver(Context context) {
    this.context = context;
  }

  void takePhoto(ImageCapture capture, Effect effect) {
    File shot = new File(context.getCacheDir(), "shot-" + System.nanoTime() + ".jpg");
    ImageCapture.OutputFileOptions options = new ImageCapture.OutputFileOptions.Builder(shot).build();
    capture.takePicture(options, THREAD, new ImageCapture.OnImageSavedCallback() {
      @Override
      public void onImageSaved(@NonNull ImageCapture.OutputFileResults results) {
        try {
          save(shot, effect);
          report(context.getString(R.string.saved, effect.label()));
        } catch (IOException | RuntimeException e) {
          report(context.getString(R.string.not_saved, e.getMessage()));
        } finally {
          shot.delete();
        }
      }

      @Override
      public void onError(@NonNull ImageCaptureException fault) {
        report(context.getString(R.string.not_saved, fault.getMessage()));
      }
    });
  }

  private void save(File shot, Effect effect) throws IOException {
    ContentResolver gallery = context.getContentResolver();
    ContentValues photo = new ContentValues();
    photo.put(MediaStore.MediaColumns.MIME_TYPE, "image/jpeg");
    photo.put(MediaStore.MediaColumns.RELATIVE_PATH, Environment.DIRECTORY_PICTURES + "/Effects");
    photo.put(MediaStore.MediaColumns.IS_PENDING, 1);
    Uri uri = gallery.insert(
        MediaStore.Images.Media.getContentUri(MediaStore.VOLUME_EXTERNAL_PRIMARY), photo);
    if (uri == null) {
      throw new IOException("the gallery takes no photo");
    }
    try {
      try (FileChannel in = FileChannel.open(shot.toPath(), StandardOpenOption.READ);
          OutputStream out = gallery.openOutputStream(uri)) {
        Images.applyToJpeg(effect, EffectSettings.DEFAULT, in, Channels.newChannel(out), QUALITY);
      }
      photo.clear();
      photo.put(MediaStore.MediaColumns.IS_PENDING, 0);
      gallery.update(uri, photo, null, null);
    } catch (IOException | RuntimeException e) {
      gallery.delete(uri, null, null);
      throw e;
    }
  }

  private void report(String text) {
    context.getMainExecutor().execute(() -> Toast.makeText(context, text, Toast.LENGTH_SHORT).show());
  }
}
