import com.orvik.camera.common.Native.SFBEngineAlgorithm;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;

/** The face-beauty engine through the virtual machine, with a stand-in for the engine. */
final class SFBEngineAlgorithmTest extends Harness {
  private static final Native SFB =
      new Native("CodecDataAlgorithm", "Java_com_orvik_camera_common_Native_SFBEngineAlgorithm_SFBProcess");
  private static final int H = 24;

  private static Object process(ByteBuffer frame, int w, int h, int smooth, int toning, int slimming) {
    SFBEngineAlgorithm.SFBProcess(frame, w, h, smooth, toning, slimming);
    return null;
  }

  private static void expect(boolean changes, int w, int smooth, int toning, int slimming, String... lines) {
    byte[] frame = random(w * H * 3 / 2);
    ByteBuffer buffer = direct(frame);
    SFB.call("levels", () -> process(buffer, w, H, smooth, toning, slimming), lines);
    for (int i = 0; changes && i < frame.length; i++) {
      frame[i] += (byte) (i < w * H ? smooth : slimming); // as the stand-in does
    }
    same(bytes(buffer), frame, "the frame");
  }

  public static void main(String[] args) throws IOException {
    Path library = freshPath("system/lib64/libSFB.so");
    String none = "CodecDataAlgorithm|6|SFBProcess X all is 0. so make mode to 0";
    expect(false, 40, 0, 0, 0, none);
    expect(false, 40, 7, -20, 300); // there is no engine
    Files.copy(Path.of(System.getProperty("engine")), library);
    SFB.refusesBadImages(96, (buffer, w, h) -> process(buffer, w, h, 60, 60, 30));
    expect(true, 40, 7, -20, 300);
    expect(true, 38, 60, 60, 30);
    expect(false, 40, 1, 99, 1); // the engine refuses this
    expect(false, 40, 0, 0, 0, none);
    for (int[] odd : new int[][] {{7, 8}, {8, 7}, {1, 1}}) {
      SFB.refuses("odd", () -> process(direct(random(96)), odd[0], odd[1], 60, 60, 30));
      SFB.refuses("odd", () -> process(direct(random(96)), odd[0], odd[1], 0, 0, 0), none);
    }
    finish();
  }
}
