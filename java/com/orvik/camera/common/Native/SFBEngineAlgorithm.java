package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;

/**
 * Beautifies faces in a camera frame, in place, with the face-beauty engine of the device.
 *
 * <p>Buffers and the treatment of bad input: see the {@linkplain com.orvik.camera.common.Native
 * package description}. In short: direct buffers only; bad input gives one line in the log with the
 * tag {@code CodecDataAlgorithm} and an untouched frame, never an exception.
 *
 * <p>The engine is a library of the device, {@code /system/lib64/libSFB.so}. It is loaded by the
 * first call that needs it and stays loaded; if loading fails, the next call tries again. Each call
 * makes an engine of its own and releases it. Calls may overlap: the engine works on one frame at a
 * time, and further calls wait.
 */
public final class SFBEngineAlgorithm {
  static {
    System.loadLibrary("Algorithm");
  }

  private SFBEngineAlgorithm() {}

  /**
   * Smooths skin, tones it and slims faces in a YUV frame.
   *
   * <pre>
   *   index 0                    width x height
   *         +--------------------+-------------------+
   *         | Y Y Y Y ...        | chroma pairs      |
   *         +--------------------+-------------------+
   *         one byte a pixel     one pair for each block of 2 x 2 pixels
   * </pre>
   *
   * <p>Each level goes from 0 (off) to 100 (strongest). No level is refused; the engine gets the low
   * 8 bits.
   *
   * <table>
   *   <caption>Levels with a special meaning</caption>
   *   <tr><th>smooth, toning, slimming</th><th>meaning</th></tr>
   *   <tr><td>0, 0, 0</td><td>nothing is done, and the engine is not even loaded</td></tr>
   *   <tr><td>60, 60, 30</td><td>the engine's default levels</td></tr>
   * </table>
   *
   * <p>If the device has no engine, that is logged and the frame is left as it is. An error code of
   * the engine appears only in the log.
   *
   * @param frame the frame, 3 &times; width &times; height / 2 bytes; changed in place
   * @param width pixels per row, even
   * @param height rows, even
   * @param smooth skin smoothing, 0 to 100
   * @param toning skin toning, 0 to 100
   * @param slimming face slimming, 0 to 100
   */
  public static native void SFBProcess(
      ByteBuffer frame, int width, int height, int smooth, int toning, int slimming);
}
