package com.orvik.camera.example;

import android.Manifest;
import android.content.pm.PackageManager;
import android.os.Bundle;
import android.view.View;
import android.widget.AdapterView;
import android.widget.ArrayAdapter;
import android.widget.ImageView;
import android.widget.Spinner;
import android.widget.Toast;
import androidx.activity.ComponentActivity;
import androidx.activity.result.contract.ActivityResultContracts;
import androidx.camera.core.CameraSelector;
import androidx.camera.core.ImageAnalysis;
import androidx.camera.core.ImageCapture;
import androidx.camera.lifecycle.ProcessCameraProvider;
import com.google.common.util.concurrent.ListenableFuture;
import com.orvik.camera.common.Native.Effect;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;

/** A preview with an effect, a choice of effects, and a shutter that saves with the chosen one. */
public final class MainActivity extends ComponentActivity {
  private final ExecutorService previewThread = Executors.newSingleThreadExecutor();
  private final ImageCapture capture = new ImageCapture.Builder().build();
  private EffectPreview preview;

  @Override
  protected void onCreate(Bundle state) {
    super.onCreate(state);
    setContentView(R.layout.main);
    ImageView view = findViewById(R.id.preview);
    preview = new EffectPreview(view);
    listEffects(findViewById(R.id.effects));
    PhotoSaver saver = new PhotoSaver(getApplicationContext());
    View shutter = findViewById(R.id.shutter);
    shutter.setOnClickListener(button -> saver.takePhoto(capture, preview.effect()));

    if (checkSelfPermission(Manifest.permission.CAMERA) == PackageManager.PERMISSION_GRANTED) {
      startCamera();
    } else {
      registerForActivityResult(new ActivityResultContracts.RequestPermission(), granted -> {
        if (granted) {
          startCamera();
        } else {
          Toast.makeText(this, R.string.no_camera, Toast.LENGTH_LONG).show();
        }
      }).launch(Manifest.permission.CAMERA);
    }
  }

  @Override
  protected void onDestroy() {
    super.onDestroy();
    previewThread.shutdown(); // the camera is unbound by now
  }

  /** Those that need nothing but the image; an application may bring pictures for the others. */
  private void listEffects(Spinner spinner) {
    List<Effect> effects = new ArrayList<>();
    List<String> labels = new ArrayList<>();
    for (Effect effect : Effect.values()) {
      if (!effect.needsPicture()) {
        effects.add(effect);
        labels.add(effect.label());
      }
    }
    spinner.setAdapter(new ArrayAdapter<>(this, android.R.layout.simple_spinner_dropdown_item, labels));
    spinner.setOnItemSelectedListener(new AdapterView.OnItemSelectedListener() {
      @Override
      public void onItemSelected(AdapterView<?> parent, View item, int position, long id) {
        preview.choose(effects.get(position));
      }

      @Override
      public void onNothingSelected(AdapterView<?> parent) {}
    });
  }

  private void startCamera() {
    ListenableFuture<ProcessCameraProvider> provider = ProcessCameraProvider.getInstance(this);
    provider.addListener(() -> {
      try {
        bind(provider.get());
      } catch (ExecutionException | InterruptedException | IllegalArgumentException e) {
        Toast.makeText(this, R.string.no_camera, Toast.LENGTH_LONG).show();
      }
    }, getMainExecutor());
  }

  private void bind(ProcessCameraProvider provider) {
    ImageAnalysis frames = new ImageAnalysis.Builder()
        .setBackpressureStrategy(ImageAnalysis.STRATEGY_KEEP_ONLY_LATEST) // late frames are dropped
        .build();
    frames.setAnalyzer(previewThread, preview);
    provider.unbindAll();
    provider.bindToLifecycle(this, CameraSelector.DEFAULT_BACK_CAMERA, frames, capture);
  }
}
