package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;

/**
 * Applies a named photo effect to a camera frame, in place.
 *
 * <p>Buffers and the treatment of bad input: see the {@linkplain com.orvik.camera.common.Native
 * package description}. In short: direct buffers only; bad input gives one line in the log with the
 * tag {@code EffectAlgorithm} and an untouched frame, never an exception.
 *
 * <p>Calls may come from any thread. Calls that overlap queue up and run one after the other; each
 * spreads its work over four threads, which the first call starts and which stay until the library
 * is unloaded.
 */
public final class EffectAlgorithm {
  static {
    System.loadLibrary("Algorithm");
  }

  private EffectAlgorithm() {}

  /**
   * Applies an effect to an NV21 frame.
   *
   * <pre>
   *   index 0                    width x height
   *         +--------------------+-------------------+
   *         | Y Y Y Y ...        | V U V U ...       |
   *         +--------------------+-------------------+
   *         one byte a pixel     one pair for each block of 2 x 2 pixels
   * </pre>
   *
   * <p>Names are exact, upper and lower case included:
   *
   * <table>
   *   <caption>Effects</caption>
   *   <tr><th>name</th><th>overlay picture</th></tr>
   *   <!-- catalogue: pipeline -->
   *   <tr><td>{@code PrettySweet},
   *     {@code PrettyNature},
   *     {@code PrettyBlue},
   *     {@code PrettyMoonlight},
   *     {@code PrettyWhiteDew}</td>
   *     <td>none</td></tr>
   *   <tr><td>{@code PrettyBeautiful},
   *     {@code PrettyPink}</td>
   *     <td>{@code sucai0.png}, or {@code sucai0_r.png} when the frame is wider than tall</td></tr>
   *   <tr><td>{@code PrettyJapan}</td>
   *     <td>{@code sucai3.png}</td></tr>
   *   <!-- end of catalogue -->
   * </table>
   *
   * <p>Pictures are read from {@code /data/data/com.android.camera/effect/} on every call. With any
   * other name, or when the picture can't be read, the frame passes through the same conversions
   * without an effect: it looks the same, except for pure colours, which are clipped, but is not
   * identical to the bit. That is not an error. When height / 4 is even, the last height mod 4 rows
   * keep their values with every effect.
   *
   * <p>Odd sizes are accepted, but the work is cut into strips, and the colours of an odd frame are
   * not exact where strips end. An odd frame of more than {@link Integer#MAX_VALUE} / 3 pixels, or
   * a frame for which memory is short, is refused like bad input.
   *
   * @param frame the frame, at least 3 &times; width &times; height / 2 bytes (rounded down);
   *     changed in place
   * @param width pixels per row, preferably even
   * @param height rows, preferably even
   * @param effectName the name of the effect, not null
   */
  public static native void Effect(ByteBuffer frame, int width, int height, String effectName);
}
