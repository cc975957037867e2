import com.orvik.camera.common.Native.SFBEngineAlgorithm;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/** The face-beauty engine through the virtual machine, with a stand-in for the engine. */
final class SFBEngineAlgorithmTest extends Harness {
  private static final Native SFB =
      new Native("CodecDataAlgorithm", "Java_com_orvik_camera_common_Native_SFBEngineAlgorithm_SFBProcess");
  private static final int W = 40;
  private static final int H = 24;

  private static Object process(ByteBuffer frame, int w, int h, int smooth, int toning, int slimming) {
    SFBEngineAlgorithm.SFBProcess(frame, w, h, smooth, toning, slimming);
    return null;
  }

  /** Calls the native with the lines of the adapter and the engine, and checks the frame. */
  private static void expect(int w, int[] levels, boolean changes, String... lines) {
    byte[] frame = random(w * H * 3 / 2);
    ByteBuffer buffer = direct(frame);
    SFB.call("levels", () -> process(buffer, w, H, levels[0], levels[1], levels[2]), lines);
    for (int i = 0; changes && i < frame.length; i++) {
      frame[i] += (byte) (i < w * H ? levels[0] : levels[2]); // as the stand-in does
    }
    same(bytes(buffer), frame, "the frame");
  }

  /** The lines from the mode to the end. */
  private static String[] lines(int mode, int w, int[] l, String process, String... loading) {
    List<String> lines = new ArrayList<>();
    lines.add(String.format("DOC_SFB|6|mode:%d, slimming:%d, smooth:%d, toning:%d", mode, l[2], l[0], l[1]));
    lines.addAll(List.of(loading));
    lines.add(String.format("engine|4|create %d %d 30100002 8", w, H));
    String s = String.format("%02x%02x", l[0] & 255, l[1] & 255);
    lines.add(String.format("DOC_SFB|6|SetConfiguration s %d, t %d, l %d, sl 100, sc 100, ee 0, ec 0",
        l[0] & 255, l[1] & 255, l[2] & 255));
    lines.add(String.format("engine|4|configuration %s646401000000 00000000%s%02x0000", s, s, l[2] & 255));
    lines.add("DOC_SFB|6|SetConfiguration finished");
    lines.add("engine|4|process -1 ...");
    lines.add("DOC_SFB|6|Process " + process);
    lines.add("engine|4|release");
    return lines.toArray(new String[0]);
  }

  private static void fromThreads() throws InterruptedException {
    List<Thread> threads = new ArrayList<>();
    for (int t = 1; t <= 3; t++) {
      byte level = (byte) t;
      threads.add(new Thread(() -> {
        for (int round = 0; round < 40; round++) {
          ByteBuffer frame = ByteBuffer.allocateDirect(W * H * 3 / 2);
          process(frame, W, H, level, 1, level);
          for (int i = 0; i < frame.capacity(); i++) {
            check(frame.get(i) == level, "calls at once keep apart");
          }
        }
      }));
    }
    threads.forEach(Thread::start);
    for (Thread thread : threads) {
      thread.join();
    }
    check(!takeLog().contains("two engines"), "one engine at a time");
  }

  public static void main(String[] args) throws IOException, InterruptedException {
    Path library = Path.of(System.getenv("ALGORITHM_DEVICE_ROOT")).resolve("system/lib64/libSFB.so");
    Files.createDirectories(library.getParent());
    Files.deleteIfExists(library);
    String none = "CodecDataAlgorithm|6|SFBProcess X all is 0. so make mode to 0";
    String loading = "DOC_SFB|6|Loading SFBEngine library ... ";
    int[] some = {7, -20, 300};
    expect(W, new int[] {0, 0, 0}, false, none);
    for (int attempt = 0; attempt < 2; attempt++) {
      expect(W, some, false, "DOC_SFB|6|mode:2, slimming:300, smooth:7, toning:-20", loading,
          "DOC_SFB|6|" + library + ": cannot open shared object file: No such file or directory",
          "DOC_SFB|6|loadSFBFunc failed...");
    }
    SFB.refusesBadImages(96, (buffer, w, h) -> process(buffer, w, h, 60, 60, 30));
    Files.copy(Path.of(System.getProperty("engine")), library);
    SFB.refusesBadImages(96, (buffer, w, h) -> process(buffer, w, h, 60, 60, 30)); // not even loaded
    expect(W, some, true, lines(2, W, some, "0", loading, "DOC_SFB|6|Loading function ... "));
    expect(W, some, true, lines(2, W, some, "0"));
    expect(W, new int[] {60, 60, 30}, true, lines(1, W, new int[] {60, 60, 30}, "0"));
    expect(W, new int[] {50, 60, 30}, true, lines(2, W, new int[] {50, 60, 30}, "0"));
    expect(W, new int[] {1, 99, 1}, false, lines(2, W, new int[] {1, 99, 1}, "-7"));
    expect(6, some, false, "DOC_SFB|6|mode:2, slimming:300, smooth:7, toning:-20",
        "engine|4|create 6 24 30100002 8"); // which fails
    expect(W, new int[] {0, 0, 0}, false, none);
    for (int[] odd : new int[][] {{7, 8}, {8, 7}, {1, 1}}) {
      SFB.refuses("odd", () -> process(direct(random(96)), odd[0], odd[1], 60, 60, 30));
    }
    fromThreads();
    finish();
  }
}
