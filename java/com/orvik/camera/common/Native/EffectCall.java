package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;
import java.util.List;
import java.util.Map;

/** Settings that go with an effect, as the natives take them. */
final class EffectCall {
  private static final int SHAPE = 4; // numbers of an image's shape

  final double amount;
  final double[] values;
  final ByteBuffer[] pictures;
  final int[] pictureShapes;
  final ByteBuffer cancellation; // null when there is none

  /**
   * Checks the settings against the effect.
   *
   * @param devicePictures whether the device has pictures for those that the settings lack
   */
  EffectCall(Effect effect, EffectSettings settings, boolean devicePictures) {
    Checks.notNull(settings, "settings");
    amount = settings.amount();
    values = values(effect, settings.parameters());
    Pixels[] chosen = pictures(effect, settings.pictures(), devicePictures);
    pictures = buffers(chosen);
    pictureShapes = shapes(chosen);
    cancellation = settings.cancellation() != null ? settings.cancellation().flag() : null;
  }

  static ByteBuffer[] buffers(Pixels[] images) {
    ByteBuffer[] buffers = new ByteBuffer[images.length];
    for (int i = 0; i < images.length; i++) {
      buffers[i] = images[i] != null ? images[i].buffer() : null;
    }
    return buffers;
  }

  static int[] shapes(Pixels[] images) {
    int[] shapes = new int[SHAPE * images.length];
    for (int i = 0; i < images.length; i++) {
      if (images[i] != null) {
        System.arraycopy(images[i].shape(), 0, shapes, SHAPE * i, SHAPE);
      }
    }
    return shapes;
  }

  private static double[] values(Effect effect, Map<String, Double> chosen) {
    List<Effect.Parameter> parameters = effect.parameters();
    double[] values = new double[parameters.size()];
    int known = 0;
    for (int i = 0; i < values.length; i++) {
      Effect.Parameter parameter = parameters.get(i);
      Double value = chosen.get(parameter.name());
      known += value != null ? 1 : 0;
      values[i] = value != null ? inRange(parameter, value) : parameter.preset();
    }
    if (known < chosen.size()) {
      for (String name : chosen.keySet()) {
        Checks.require(parameters.stream().anyMatch(parameter -> parameter.name().equals(name)),
            "settings have the parameter " + name + ", which " + effect + " has not");
      }
    }
    return values;
  }

  private static double inRange(Effect.Parameter parameter, double value) {
    Checks.require(!parameter.isInteger() || value == Math.rint(value),
        parameter.name() + " is " + value + ", but must be a whole number");
    return Checks.within(value, parameter.least(), parameter.most(), parameter.name());
  }

  private static Pixels[] pictures(
      Effect effect, Map<String, Pixels> chosen, boolean devicePictures) {
    List<Effect.Picture> roles = effect.pictures();
    Pixels[] pictures = new Pixels[roles.size()];
    for (Map.Entry<String, Pixels> entry : chosen.entrySet()) {
      int index = indexOf(roles, entry.getKey());
      boolean first = entry.getKey().equals(EffectSettings.FIRST);
      Checks.require(index >= 0, first ? "settings have a picture, but " + effect + " takes none"
          : "settings have the picture " + entry.getKey() + ", which " + effect + " has not");
      pictures[index] = entry.getValue();
    }
    for (int i = 0; i < pictures.length; i++) {
      Effect.Picture role = roles.get(i);
      Checks.require(pictures[i] != null || devicePictures,
          "settings have no picture " + role.role() + ", but " + effect + " needs one");
      if (role.sizeRule() == Effect.Picture.SizeRule.COVERS_THE_FIRST && pictures[i] != null) {
        Checks.require(
            pictures[i].width() >= pictures[0].width() && pictures[i].height() >= pictures[0].height(),
            role.role() + " has " + Checks.size(pictures[i].width(), pictures[i].height())
                + " pixels, but must be as large as " + roles.get(0).role() + ", which has "
                + Checks.size(pictures[0].width(), pictures[0].height()));
      }
    }
    return pictures;
  }

  private static int indexOf(List<Effect.Picture> roles, String name) {
    for (int i = 0; i < roles.size(); i++) {
      if (name.equals(roles.get(i).role()) || name.equals(EffectSettings.FIRST)) {
        return i;
      }
    }
    return -1;
  }
}
