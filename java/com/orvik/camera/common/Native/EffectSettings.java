package com.orvik.camera.common.Native;

import androidx.annotation.NonNull;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.Map;

/**
 * What goes with an effect: how much of it, its parameters, its pictures, and how to stop it.
 * Immutable: each method returns new settings that differ in one thing.
 *
 * <pre>{@code
 *   EffectSettings half = EffectSettings.DEFAULT.amount(0.5);
 *   Images.apply(Effect.FILL_LIGHT, photo, photo, half.parameter("radius", 0.7));
 * }</pre>
 *
 * <p>Names of parameters and pictures are checked when the settings are used, against the effect.
 */
public final class EffectSettings {
  /** The whole effect with every parameter at its preset, without a picture. */
  @NonNull
  public static final EffectSettings DEFAULT =
      new EffectSettings(1, Collections.emptyMap(), Collections.emptyMap(), null);

  /** The name under which the first picture is kept until the effect is known. */
  static final String FIRST = "";

  private final double amount;
  private final Map<String, Double> parameters;
  private final Map<String, Pixels> pictures;
  private final Cancellation cancellation;

  private EffectSettings(double amount, Map<String, Double> parameters,
      Map<String, Pixels> pictures, Cancellation cancellation) {
    this.amount = amount;
    this.parameters = parameters;
    this.pictures = pictures;
    this.cancellation = cancellation;
  }

  /**
   * How much of the effect: in between, each colour value is mixed from the source's and the
   * effect's and rounded.
   *
   * @param zeroToOne 0 for the source as it is, 1 for the whole effect
   * @return the new settings
   * @throws IllegalArgumentException when the amount is not from 0 to 1
   */
  @NonNull
  public EffectSettings amount(double zeroToOne) {
    return new EffectSettings(
        Checks.within(zeroToOne, 0, 1, "amount"), parameters, pictures, cancellation);
  }

  /**
   * A parameter of the effect, instead of its preset.
   *
   * @param name as {@link Effect#parameters} has it
   * @param value in the parameter's range
   * @return the new settings
   * @throws NullPointerException when the name is null
   * @throws IllegalArgumentException when the value is no finite number
   */
  @NonNull
  public EffectSettings parameter(@NonNull String name, double value) {
    Checks.notNull(name, "name");
    Checks.require(Double.isFinite(value), name + " is " + value + ", but must be finite");
    return new EffectSettings(amount, with(parameters, name, value), pictures, cancellation);
  }

  /**
   * The effect's first picture, which nearly always is its only one.
   *
   * @param picture the picture, its colours premultiplied with alpha as in a {@code Bitmap}; only
   *     read, during calls
   * @return the new settings
   * @throws NullPointerException when the picture is null
   */
  @NonNull
  public EffectSettings picture(@NonNull Pixels picture) {
    return picture(FIRST, picture);
  }

  /**
   * One of the effect's pictures.
   *
   * @param role as {@link Effect#pictures} has it
   * @param picture the picture, as above
   * @return the new settings
   * @throws NullPointerException when an argument is null
   */
  @NonNull
  public EffectSettings picture(@NonNull String role, @NonNull Pixels picture) {
    Checks.notNull(role, "role");
    Checks.notNull(picture, "picture");
    return new EffectSettings(amount, parameters, with(pictures, role, picture), cancellation);
  }

  /**
   * Lets another thread stop the calls with these settings.
   *
   * @param cancellation asked after every band of rows
   * @return the new settings
   * @throws NullPointerException when the cancellation is null
   */
  @NonNull
  public EffectSettings cancelledBy(@NonNull Cancellation cancellation) {
    Checks.notNull(cancellation, "cancellation");
    return new EffectSettings(amount, parameters, pictures, cancellation);
  }

  double amount() {
    return amount;
  }

  Map<String, Double> parameters() {
    return parameters;
  }

  Map<String, Pixels> pictures() {
    return pictures;
  }

  /** Null when there is none. */
  Cancellation cancellation() {
    return cancellation;
  }

  private static <V> Map<String, V> with(Map<String, V> map, String name, V value) {
    Map<String, V> copy = new LinkedHashMap<>(map);
    copy.put(name, value);
    return copy;
  }
}
