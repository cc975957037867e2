import com.orvik.camera.common.Native.EffectAlgorithm;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.function.UnaryOperator;
import javax.imageio.ImageIO;

/** The effect road through the virtual machine. */
final class EffectAlgorithmTest extends Harness {
  // Heights with a remainder of two rows, with odd and even quarters, with short and empty strips.
  private static final int[][] SIZES = {
    {48, 34}, {48, 36}, {40, 48}, {16, 14}, {4, 6}, {4, 4}, {2, 2}, {642, 1082}
  };
  private static final Native EFFECT =
      new Native("void", "EffectAlgorithm", "Effect", "jobject, jint, jint, jstring");

  private static int[] exchange(int[] p) {
    return new int[] {p[2], p[1], p[0]};
  }

  private static int screen(double v) {
    int rest = 255 - clamp((int) v);
    return 255 - (rest * rest >> 8);
  }

  private static int[] blue(int[] p) {
    int red = screen((p[0] - 127) * 1.25 + 127.0);
    int green = screen((p[1] - 127) * 1.25 + 127.0);
    return new int[] {screen(p[2] + 20), green, (int) (red * 0.8)};
  }

  /** The whole road for even sizes. Both ends take V, U pairs for U, V: the exchange undoes it. */
  private static byte[] road(byte[] frame, int w, int h, UnaryOperator<int[]> filter) {
    byte[] out = frame.clone();
    int rows = h / 4 % 2 == 0 ? h / 4 * 4 : h;
    for (int i = 0; i < w * rows; i++) {
      int pair = w * h + i / w / 2 * w + i % w / 2 * 2;
      int[] q = filter.apply(toBgr(frame[i] & 255, frame[pair] & 255, frame[pair + 1] & 255));
      byte[] yuv = toYuv(q[2], q[1], q[0]);
      out[i] = yuv[0];
      if (i / w % 2 == 1 && i % w % 2 == 0) {
        System.arraycopy(yuv, 1, out, pair, 2);
      }
    }
    return out;
  }

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

  private static void expect(String name, int w, int h, UnaryOperator<int[]> filter) {
    byte[] frame = random(3 * w * h / 2);
    same(run(frame, w, h, name), road(frame, w, h, filter), name + " " + w + "x" + h);
  }

  /** PrettyPink of a wide frame with a picture of one colour. */
  private static byte[] pink(byte[] frame, Path path, int argb) throws IOException {
    BufferedImage picture = new BufferedImage(1, 4, BufferedImage.TYPE_INT_ARGB);
    picture.setRGB(0, 0, 1, 4, new int[] {argb, argb, argb, argb}, 0, 1);
    ImageIO.write(picture, "png", path.toFile());
    return run(frame, 48, 32, "PrettyPink");
  }

  public static void main(String[] args) throws IOException {
    Path path = Path.of(System.getenv("ALGORITHM_DEVICE_ROOT"))
        .resolve("data/data/com.android.camera/effect/sucai0_r.png");
    Files.createDirectories(path.getParent());
    Files.deleteIfExists(path);
    EFFECT.call("first run", () -> effect(direct(random(6)), 2, 2, "none"),
        "Defog|2|Constructed ThreadPool of size 4.",
        "Defog|2|4 threads created by the thread pool", nameLine("none"));
    for (int[] size : SIZES) {
      expect("PrettyBlue", size[0], size[1], EffectAlgorithmTest::blue);
      for (String name : List.of("prettyblue", "%s%n", "", "fish-eye", "PrettyPink")) {
        expect(name, size[0], size[1], EffectAlgorithmTest::exchange); // PrettyPink: no picture
      }
    }
    byte[] frame = random(48 * 32 * 3 / 2);
    byte[] black = pink(frame, path, 0xff000000);
    byte[] colour = pink(frame, path, 0xff408001);
    same(pink(frame, path, 0x807fff01), colour, "a picture is premultiplied, rounded");
    check(!Arrays.equals(colour, black), "the picture counts");
    expect("PrettyPink", 32, 48, EffectAlgorithmTest::exchange); // tall frames have their own

    EFFECT.refusesBadImages(96, (buffer, w, h) -> effect(buffer, w, h, "PrettyBlue"));
    EFFECT.refuses("no name", () -> effect(direct(frame), 8, 8, null));
    for (int[] odd : new int[][] {{7, 5}, {8, 21}, {21, 8}, {1, 1}, {33, 33}}) {
      byte[] content = random(3 * odd[0] * odd[1] / 2);
      run(content, odd[0], odd[1], "PrettyBlue"); // the guards must hold
      ByteBuffer small = direct(content).slice(0, content.length - 1);
      EFFECT.refuses("small odd", () -> effect(small, odd[0], odd[1], "PrettyBlue"));
    }
    finish();
  }
}
