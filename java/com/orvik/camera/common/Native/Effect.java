package com.orvik.camera.common.Native;

import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;

/**
 * The effects that {@link Images} applies: what each shows, what it takes, and what it costs.
 *
 * <p>Their formulas and pictures of what they make are in the library's {@code docs/effects.md}.
 */
public enum Effect {
  // <!-- catalogue: constants -->
  /** Lifted shadows, milky middle tones. */
  PRETTY_SWEET("PrettySweet", "Pretty sweet",
      "Lifted shadows, milky middle tones.",
      Rows.ALONE, true, list(), list()),
  /** Brighter, with clear whites and green held back. */
  PRETTY_NATURE("PrettyNature", "Pretty nature",
      "Brighter, with clear whites and green held back.",
      Rows.ALONE, true, list(), list()),
  /** Cool: blue lifted, red to 80 %. */
  PRETTY_BLUE("PrettyBlue", "Pretty blue",
      "Cool: blue lifted, red to 80 %.",
      Rows.ALONE, true, list(), list()),
  /** Pale light with blue shadows. */
  PRETTY_MOONLIGHT("PrettyMoonlight", "Pretty moonlight",
      "Pale light with blue shadows.",
      Rows.ALONE, true, list(), list()),
  /** Bright and fresh. */
  PRETTY_WHITE_DEW("PrettyWhiteDew", "Pretty white dew",
      "Bright and fresh.",
      Rows.ALONE, true, list(), list()),
  /** Skin tones lifted into light. */
  PRETTY_BEAUTIFUL("PrettyBeautiful", "Pretty beautiful",
      "Skin tones lifted into light.",
      Rows.ALONE, true, list(), list()),
  /** Pink light over everything. */
  PRETTY_PINK("PrettyPink", "Pretty pink",
      "Pink light over everything.",
      Rows.ALONE, true, list(), list(
          new Picture("overlay", Picture.SizeRule.ANY, "the soft light"))),
  /** The soft, bright look of a magazine. */
  PRETTY_JAPAN("PrettyJapan", "Pretty japan",
      "The soft, bright look of a magazine.",
      Rows.ALONE, true, list(), list(
          new Picture("overlay", Picture.SizeRule.ANY, "the soft light"))),
  /** Film in the wrong bath: strong contrast, flat blue. */
  CROSS_PROCESS("cross-process", "Cross process",
      "Film in the wrong bath: strong contrast, flat blue.",
      Rows.ALONE, false, list(), list()),
  /** Black and white. */
  GRAY_SCALE("gray-scale", "Gray scale",
      "Black and white.",
      Rows.ALONE, false, list(), list()),
  /** The brown of an old print. */
  SEPIA("sepia", "Sepia",
      "The brown of an old print.",
      Rows.ALONE, false, list(), list()),
  /** Bright, warm and rosy. */
  PINK("pink", "Pink",
      "Bright, warm and rosy.",
      Rows.ALONE, false, list(), list()),
  /** Washed in yellow and green light. */
  SUMMER("summer", "Summer",
      "Washed in yellow and green light.",
      Rows.ALONE, false, list(), list()),
  /** Below the surface: blue stays, red fades. */
  OCEAN("ocean", "Ocean",
      "Below the surface: blue stays, red fades.",
      Rows.ALONE, false, list(), list()),
  /** Every colour turned into its opposite. */
  NEGATIVE("negative", "Negative",
      "Every colour turned into its opposite.",
      Rows.ALONE, false, list(), list()),
  /** Warm and bright; despite its name, without blocks. */
  MOSAIC("mosaic", "Mosaic",
      "Warm and bright; despite its name, without blocks.",
      Rows.ALONE, false, list(), list()),
  /** Experimental: hard contrast, golden light. */
  OTHER_TEST("other-test", "Other test",
      "Experimental: hard contrast, golden light.",
      Rows.ALONE, false, list(), list()),
  /** Warmer: more red, less blue. */
  TEMPERATURE("temperature", "Temperature",
      "Warmer: more red, less blue.",
      Rows.ALONE, false, list(), list()),
  /** The tones of a cheap film camera. */
  LOMO("lomo", "Lomo",
      "The tones of a cheap film camera.",
      Rows.ALONE, false, list(), list()),
  /** Lomo with dark corners. */
  LOMO_FUN("lomo-fun", "Lomo fun",
      "Lomo with dark corners.",
      Rows.ALONE, false, list(), list()),
  /** Bulging, as through a round lens. */
  FISH_EYE("fish-eye", "Fish eye",
      "Bulging, as through a round lens.",
      Rows.ALL, false, list(), list()),
  /** A soft lamp from the front. */
  FILL_LIGHT("fill-light", "Fill light",
      "A soft lamp from the front.",
      Rows.ALL, false, list(
          new Parameter("radius", 0.3, 2, 1, false, "half diagonals",
              "reach of the light, 1 = the corners")), list()),
  /** Sharp in the middle column, increasingly blurred towards both sides. */
  MINIATURE("miniature", "Miniature",
      "Sharp in the middle column, increasingly blurred towards both sides.",
      Rows.NEAR, false, list(), list()),
  /** A toy world: sharp across the middle, blurred above and below. */
  MINIATURE_ROWS("miniature-rows", "Miniature rows",
      "A toy world: sharp across the middle, blurred above and below.",
      Rows.NEAR, false, list(
          new Parameter("offset", 0, 1000000, 0, true, "rows",
              "first row, within a taller picture"),
          new Parameter("ramp", 0, 1000000, 0, true, "rows",
              "rows of that taller picture; 0: it ends with the last row here")), list()),
  /** The same as miniature, for 32-bit pixels. */
  BLUR("blur", "Blur",
      "The same as miniature, for 32-bit pixels.",
      Rows.NEAR, false, list(), list()),
  /** Blurred towards both sides, half as much as blur. */
  ACTIVE_BLUR("active-blur", "Active blur",
      "Blurred towards both sides, half as much as blur.",
      Rows.NEAR, false, list(), list()),
  /** Pencil lines on white. */
  SKETCH("sketch", "Sketch",
      "Pencil lines on white.",
      Rows.NEAR, false, list(), list()),
  /** Pencil lines in the tint of a paper. */
  NEW_SKETCH("new-sketch", "New sketch",
      "Pencil lines in the tint of a paper.",
      Rows.NEAR, false, list(), list(
          new Picture("paper", Picture.SizeRule.ANY, "the paper"))),
  /** Bright colours with edges in ink. */
  PRAGUE("prague", "Prague",
      "Bright colours with edges in ink.",
      Rows.NEAR, false, list(), list()),
  /** Pale as a cartoon; highlights wrap. */
  PRAGUE_CARTON("prague-carton", "Prague carton",
      "Pale as a cartoon; highlights wrap.",
      Rows.NEAR, false, list(), list()),
  /** Deep colours, hard contrast. */
  NATURE("nature", "Nature",
      "Deep colours, hard contrast.",
      Rows.ALL, false, list(), list()),
  /** A grey relief. */
  EMBOSS("emboss", "Emboss",
      "A grey relief.",
      Rows.NEAR, false, list(), list()),
  /** Washed over with the colours of a picture. */
  COLOR_PAINT("color-paint", "Color paint",
      "Washed over with the colours of a picture.",
      Rows.ALONE, false, list(), list(
          new Picture("picture", Picture.SizeRule.ANY, "the colours"))),
  /** Framed by a picture, and inverted where a mask is not transparent. */
  AREA("area", "Area",
      "Framed by a picture, and inverted where a mask is not transparent.",
      Rows.ALONE, false, list(), list(
          new Picture("front", Picture.SizeRule.ANY, "the surrounding picture, with transparency"),
          new Picture("mask", Picture.SizeRule.COVERS_THE_FIRST, "not transparent where the photo is inverted")));
  // <!-- end of catalogue -->

  /** What an effect needs beside its own rows. */
  enum Rows {
    /** Nothing. */
    ALONE,
    /** Some rows above and below. */
    NEAR,
    /** The whole image. */
    ALL
  }

  private final String operation;
  private final String label;
  private final String description;
  private final Rows rows;
  private final boolean pipeline;
  private final List<Parameter> parameters;
  private final List<Picture> pictures;

  Effect(String operation, String label, String description, Rows rows, boolean pipeline,
      List<Parameter> parameters, List<Picture> pictures) {
    this.operation = operation;
    this.label = label;
    this.description = description;
    this.rows = rows;
    this.pipeline = pipeline;
    this.parameters = parameters;
    this.pictures = pictures;
  }

  @SafeVarargs
  @SuppressWarnings("varargs")
  private static <T> List<T> list(T... items) {
    return Collections.unmodifiableList(Arrays.asList(items));
  }

  /**
   * A short name for people, in English.
   *
   * @return the name
   */
  @NonNull
  public String label() {
    return label;
  }

  /**
   * What a photo looks like afterwards, in one English sentence.
   *
   * @return the sentence
   */
  @NonNull
  public String description() {
    return description;
  }

  /**
   * The numbers that may be chosen.
   *
   * @return the parameters, none for most effects; can't be changed
   */
  @NonNull
  public List<Parameter> parameters() {
    return parameters;
  }

  /**
   * The pictures that the effect lays over an image, all of which it needs.
   *
   * @return the pictures, none for most effects; can't be changed
   */
  @NonNull
  public List<Picture> pictures() {
    return pictures;
  }

  /**
   * Whether it needs a picture.
   *
   * @return whether there are any {@link #pictures}
   */
  public boolean needsPicture() {
    return !pictures.isEmpty();
  }

  /**
   * Whether it costs nothing extra to make source and destination the same. They may be the same for
   * every effect; the others then copy the image, or rows of it, first.
   *
   * @return whether each row is made from the same row of the source alone
   */
  public boolean worksInPlace() {
    return rows == Rows.ALONE;
  }

  /**
   * Whether the work memory is that of some rows, however tall the image is. The others take 6
   * bytes for each pixel of an image, and 10 for a JPEG's.
   *
   * @return whether any band of rows can be made from the same rows of the source, or from them and
   *     some above and below
   */
  public boolean independentRows() {
    return rows != Rows.ALL;
  }

  /** Its name in the native library. */
  String operation() {
    return operation;
  }

  /** Whether the effect pipeline runs it, under the name that operation() has. */
  boolean onPipeline() {
    return pipeline;
  }

  /** A number that may be chosen. */
  public static final class Parameter {
    private final String name;
    private final double least;
    private final double most;
    private final double preset;
    private final boolean integer;
    private final String unit;
    private final String help;

    Parameter(String name, double least, double most, double preset, boolean integer, String unit,
        String help) {
      this.name = name;
      this.least = least;
      this.most = most;
      this.preset = preset;
      this.integer = integer;
      this.unit = unit;
      this.help = help;
    }

    /**
     * Its name, for {@link EffectSettings#parameter}.
     *
     * @return the name
     */
    @NonNull
    public String name() {
      return name;
    }

    /**
     * The least value.
     *
     * @return the value, allowed itself
     */
    public double least() {
      return least;
    }

    /**
     * The greatest value.
     *
     * @return the value, allowed itself
     */
    public double most() {
      return most;
    }

    /**
     * The value where none is chosen.
     *
     * @return the value
     */
    public double preset() {
      return preset;
    }

    /**
     * Whether only whole numbers are allowed.
     *
     * @return true for whole numbers only
     */
    public boolean isInteger() {
      return integer;
    }

    /**
     * What it counts.
     *
     * @return the unit, in the plural; null for a bare number
     */
    @Nullable
    public String unit() {
      return unit;
    }

    /**
     * What it does, in a few English words.
     *
     * @return the words
     */
    @NonNull
    public String help() {
      return help;
    }
  }

  /** A picture that an effect lays over an image. */
  public static final class Picture {
    /** The size that a picture must have. */
    public enum SizeRule {
      /** Any: it is stretched over the image. */
      ANY,
      /** At least as wide and as tall as the effect's first picture. */
      COVERS_THE_FIRST
    }

    private final String role;
    private final SizeRule sizeRule;
    private final String help;

    Picture(String role, SizeRule sizeRule, String help) {
      this.role = role;
      this.sizeRule = sizeRule;
      this.help = help;
    }

    /**
     * What it is for: its name in {@link EffectSettings#picture(String, Pixels)}.
     *
     * @return the name
     */
    @NonNull
    public String role() {
      return role;
    }

    /**
     * The size that it must have.
     *
     * @return the rule
     */
    @NonNull
    public SizeRule sizeRule() {
      return sizeRule;
    }

    /**
     * What it does, in a few English words.
     *
     * @return the words
     */
    @NonNull
    public String help() {
      return help;
    }
  }
}
