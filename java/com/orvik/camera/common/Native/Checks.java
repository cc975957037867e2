package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;
import java.util.Objects;

/**
 * What is wrong with an argument: every check of {@link Images} and its types that needs no memory
 * address. Messages name the argument, what it has and what is needed.
 */
final class Checks {
  private Checks() {}

  static void require(boolean ok, String message) {
    if (!ok) {
      throw new IllegalArgumentException(message);
    }
  }

  static <T> T notNull(T value, String name) {
    return Objects.requireNonNull(value, name + " is null");
  }

  static int atLeast(int value, int least, String name) {
    require(value >= least, name + " is " + value + ", but must be at least " + least);
    return value;
  }

  static int even(int value, String name) {
    require(value % 2 == 0, name + " is " + value + ", but must be even");
    return value;
  }

  static double within(double value, double least, double most, String name) {
    // In this form, since every comparison with NaN is false.
    require(value >= least && value <= most,
        name + " is " + number(value) + ", but must be from " + number(least) + " to " + number(most));
    return value;
  }

  static ByteBuffer direct(ByteBuffer buffer, String name) {
    notNull(buffer, name);
    require(buffer.isDirect(), name + " is a heap buffer, but must be direct");
    return buffer;
  }

  static void writable(ByteBuffer buffer, String name) {
    require(!buffer.isReadOnly(), name + " is read-only, but is to be written");
  }

  /** Rows of `rowBytes` bytes, `stride` apart, from index `first` on, must be inside the buffer. */
  static void holds(
      ByteBuffer buffer, String name, long first, int rows, long stride, long rowBytes, String what) {
    long needed = first + (rows - 1L) * stride + rowBytes;
    require(buffer.capacity() >= needed,
        name + " has " + buffer.capacity() + " bytes, but " + what + " take " + needed);
  }

  static void stride(int stride, long rowBytes, String name, String what) {
    require(stride >= rowBytes,
        name + " is " + stride + ", but " + what + " take " + rowBytes + " bytes");
  }

  static void sameSize(String name, int width, int height, int neededWidth, int neededHeight) {
    require(width == neededWidth && height == neededHeight, name + " has " + size(width, height)
        + " pixels, but " + size(neededWidth, neededHeight) + " are needed");
  }

  static String size(int width, int height) {
    return width + "x" + height;
  }

  /** Whole numbers without a fraction. */
  static String number(double value) {
    return value == (long) value ? Long.toString((long) value) : Double.toString(value);
  }
}
