import com.orvik.camera.common.Native.EffectAlgorithm;
import java.nio.ByteBuffer;
import java.util.Arrays;

/** The effect pipeline through the virtual machine. */
final class EffectAlgorithmTest extends Harness {
  private static final Native EFFECT =
      new Native("void", "EffectAlgorithm", "Effect", "jobject, jint, jint, jstring");

  private static Object effect(ByteBuffer frame, int width, int height, String name) {
    EffectAlgorithm.Effect(frame, width, height, name);
    return null;
  }

  private static String nameLine(String name) {
    return "KAVRO_Effect_Function|2| brennix process  effect " + name + " ";
  }

  private static byte[] run(byte[] frame, int w, int h, String name) {
    ByteBuffer buffer = direct(frame);
    EFFECT.call(name, () -> effect(buffer, w, h, name), nameLine(name));
    return bytes(buffer);
  }

  public static void main(String[] args) {
    EFFECT.call("first run", () -> effect(direct(random(6)), 2, 2, "none"),
        "Defog|2|Constructed ThreadPool of size 4.",
        "Defog|2|4 threads created by the thread pool", nameLine("none"));
    for (int[] size : new int[][] {{48, 32}, {40, 48}, {4, 4}, {642, 1080}}) {
      for (String name : new String[] {"PrettyBlue", "%s%n", "", "PrettyPink"}) { // which has no picture
        int pixels = size[0] * size[1];
        byte[] grey = new byte[pixels * 3 / 2];
        Arrays.fill(grey, (byte) 128);
        Arrays.fill(grey, 0, pixels, (byte) 100);
        byte[] result = run(grey, size[0], size[1], name);
        boolean blue = name.equals("PrettyBlue");
        check((result[0] & 255) == (blue ? 148 : 99) && (result[pixels - 1] & 255) == (blue ? 148 : 99)
            && (result[result.length - 1] & 255) == (blue ? 144 : 128), name);
      }
    }
    EFFECT.refusesBadImages(96, (buffer, w, h) -> effect(buffer, w, h, "PrettyBlue"));
    EFFECT.refuses("no name", () -> effect(direct(random(96)), 8, 8, null));
    for (int[] odd : new int[][] {{7, 5}, {8, 21}, {21, 8}, {1, 1}, {33, 33}}) {
      byte[] content = random(3 * odd[0] * odd[1] / 2);
      run(content, odd[0], odd[1], "PrettyBlue"); // the guards must hold
      ByteBuffer small = direct(content).slice(0, content.length - 1);
      EFFECT.refuses("small odd", () -> effect(small, odd[0], odd[1], "PrettyBlue"));
    }
    finish();
  }
}
