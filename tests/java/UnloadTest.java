import java.io.IOException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.stream.Stream;

/** Class loaders that come and go, and the library with them. */
final class UnloadTest extends Harness {
  private static final int W = 64;
  private static final int H = 48;
  private static final int ROUNDS = 50;
  private static final int FIRST_ROUNDS = 3; // during which the machine starts threads of its own

  private static long threads() throws IOException {
    try (Stream<Path> tasks = Files.list(Path.of("/proc/self/task"))) {
      return tasks.count();
    }
  }

  private static boolean isLoaded() throws IOException {
    return Files.readString(Path.of("/proc/self/maps")).contains("/libAlgorithm.so");
  }

  /** What an effect makes of a frame, run through a class loader that nothing refers to afterwards. */
  private static byte[] effect(URL jar, byte[] frame) throws Exception {
    try (var loader =
        new URLClassLoader(new URL[] {jar}, ClassLoader.getPlatformClassLoader())) {
      ByteBuffer buffer = ByteBuffer.allocateDirect(frame.length).put(frame);
      Class.forName("com.orvik.camera.common.Native.EffectAlgorithm", true, loader)
          .getMethod("Effect", ByteBuffer.class, int.class, int.class, String.class)
          .invoke(null, buffer, W, H, "PrettyBlue");
      return bytes(buffer);
    }
  }

  public static void main(String[] args) throws Exception {
    URL jar = Path.of(System.getProperty("java.class.path").split(":")[0]).toUri().toURL();
    byte[] frame = random(W * H * 3 / 2);
    byte[] expected = effect(jar, frame);
    check(!Arrays.equals(frame, expected), "the effect does something");
    long before = Long.MAX_VALUE;
    for (int round = 1; round <= ROUNDS; round++) {
      long end = System.nanoTime() + 20_000_000_000L;
      // Threads that have been joined may stay listed for a moment.
      while ((isLoaded() || threads() > before) && System.nanoTime() < end) {
        System.gc();
        Thread.sleep(2);
      }
      check(!isLoaded(), "unloaded, round " + round);
      if (round == FIRST_ROUNDS) {
        Thread.sleep(500);
        before = threads();
      } else if (round > FIRST_ROUNDS) {
        check(threads() == before, threads() + " threads, not " + before + ", round " + round);
      }
      if (round < ROUNDS) {
        same(effect(jar, frame), expected, "round " + round);
        check(round < FIRST_ROUNDS || threads() >= before + 4, "the pool ran, round " + round);
      }
    }
    finish();
  }
}
