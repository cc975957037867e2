import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.function.Supplier;
import java.util.stream.Collectors;

/** Base of the test programs: checks, guarded buffers, logged calls, colour arithmetic. */
abstract class Harness {
  private static final String ANY_ERROR = "an error line of any text";
  private static final String ENGINE = "(DOC_SFB|engine)\\|.*"; // lines from below the natives
  private static final int MAX = Integer.MAX_VALUE;
  private static final int[][] BAD_SIZES = {
    {0, 8}, {8, 0}, {-8, 8}, {8, -8}, {-8, -8}, {8, 10}, {65536, 65536}, {65536, 32768},
    {23171, 23171}, {MAX, MAX}, {MAX, 1}, {1 << 30, 4}, {Integer.MIN_VALUE, Integer.MIN_VALUE}
  };
  private static final Random RANDOM = new Random(20);
  private static final byte[] GUARD = random(4097); // odd, and so are the buffers' addresses
  private static final List<ByteBuffer> GUARDED = new ArrayList<>();
  private static int failures;

  static {
    System.loadLibrary("AlgorithmLogCapture");
    startCapture();
  }

  static native void startCapture();

  /** The lines "tag|priority|text" since the last call. */
  static native String takeLog();

  static void check(boolean ok, String what) {
    if (!ok && ++failures <= 20) {
      System.out.println("FAILED: " + what);
    }
  }

  static void same(byte[] got, byte[] expected, String what) {
    int at = Arrays.mismatch(got, expected);
    check(at < 0, what + ": differs from byte " + at + " of " + expected.length);
  }

  /** The exception that a call ends with, as text. */
  static String thrown(Runnable body) {
    try {
      body.run();
      return "nothing";
    } catch (RuntimeException e) {
      return e.toString();
    }
  }

  /** Such a call must end with this message and the exception that goes with it. */
  static void refuses(String message, Runnable body) {
    String kind = message.endsWith(" is null") ? "NullPointer" : "IllegalArgument";
    String wanted = "java.lang." + kind + "Exception: " + message;
    String got = thrown(body);
    check(got.equals(wanted), "refused with " + got + ", not " + wanted);
  }

  /** Ends the program; call it last. */
  static void finish() {
    for (ByteBuffer whole : GUARDED) {
      int end = whole.capacity() - GUARD.length;
      same(bytes(whole.slice(0, GUARD.length)), GUARD, "before a buffer");
      same(bytes(whole.slice(end, GUARD.length)), GUARD, "behind a buffer");
    }
    System.out.println(failures + " failures");
    System.exit(failures > 0 ? 1 : 0);
  }

  static byte[] random(int size) {
    byte[] bytes = new byte[size];
    RANDOM.nextBytes(bytes);
    return bytes;
  }

  /** A path on the device: its folder exists, the file doesn't. */
  static Path freshPath(String path) throws IOException {
    Path file = Path.of(System.getenv("ALGORITHM_DEVICE_ROOT")).resolve(path);
    Files.createDirectories(file.getParent());
    Files.deleteIfExists(file);
    return file;
  }

  /** A direct buffer between guard bytes that must not change, or alone where the allocator checks. */
  static ByteBuffer direct(byte[] content) {
    if (Boolean.getBoolean("exactBuffers")) {
      return ByteBuffer.allocateDirect(content.length).put(content).rewind();
    }
    ByteBuffer whole = ByteBuffer.allocateDirect(content.length + 2 * GUARD.length);
    GUARDED.add(whole.put(GUARD).put(content).put(GUARD));
    return whole.slice(GUARD.length, content.length);
  }

  static byte[] bytes(ByteBuffer buffer) {
    byte[] bytes = new byte[buffer.capacity()];
    buffer.get(0, bytes);
    return bytes;
  }

  interface ImageCall {
    Object run(ByteBuffer buffer, int width, int height);
  }

  /** A native method as its log lines name it; the tag is usually its class's name. */
  record Native(String tag, String name) {
    Native(String returns, String owner, String method, String arguments) {
      this(owner, returns + " Java_com_orvik_camera_common_Native_" + owner + "_" + method
          + "(JNIEnv*, jclass, " + arguments + ")");
    }

    String line(String end) {
      return tag + "|6|" + name + " " + end;
    }

    /** Calls the method, which must not throw and must log its two lines with `between` in between. */
    <T> T call(String what, Supplier<T> body, String... between) {
      takeLog();
      T result = body.get();
      List<String> log = takeLog().lines().filter(line -> !line.matches(ENGINE))
          .collect(Collectors.toList());
      List<String> expected = new ArrayList<>(List.of(between));
      int error = expected.indexOf(ANY_ERROR) + 1; // in the log, whose first line is another one
      if (error > 0 && error < log.size() && log.get(error).startsWith(tag + "|6|")) {
        log.set(error, ANY_ERROR);
      }
      expected.add(0, line("E"));
      expected.add(line("X"));
      check(log.equals(expected), name + " " + what + ": log is " + log + ", not " + expected);
      return result;
    }

    void refuses(String what, Supplier<?> body, String... before) {
      String[] lines = Arrays.copyOf(before, before.length + 1);
      lines[before.length] = ANY_ERROR;
      check(call(what, body, lines) == null, name + " " + what + ": result");
    }

    /** Tries bad sizes with a good buffer for 8 x 8 pixels, and bad buffers with 8 x 8. */
    void refusesBadImages(int need, ImageCall body) {
      byte[] content = random(need);
      ByteBuffer good = direct(content);
      for (int[] size : BAD_SIZES) {
        refuses(Arrays.toString(size), () -> body.run(good, size[0], size[1]));
      }
      refuses("null", () -> body.run(null, 8, 8));
      refuses("heap", () -> body.run(ByteBuffer.allocate(need), 8, 8));
      refuses("a byte short", () -> body.run(good.slice(0, need - 1), 8, 8));
      same(bytes(good), content, name + " with bad input");
    }
  }
}
