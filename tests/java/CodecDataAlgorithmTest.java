import com.orvik.camera.common.Native.CodecDataAlgorithm;
import java.nio.ByteBuffer;
import java.util.Arrays;

/** JPEG files both ways through the virtual machine. */
final class CodecDataAlgorithmTest extends Harness {
  private static final int WIDTH = 97;
  private static final int HEIGHT = 61;
  private static final Native DECODE =
      new Native("_jobject*", "CodecDataAlgorithm", "JPEG2ARGB", "jobject, jintArray");
  private static final Native ENCODE =
      new Native("_jbyteArray*", "CodecDataAlgorithm", "ARGB2JPEG", "jobject, jint, jint, jint");

  private static byte[] encode(ByteBuffer pixels, int w, int h, int quality, String... log) {
    return ENCODE.call(
        w + "x" + h, () -> CodecDataAlgorithm.ARGB2JPEG(pixels, w, h, quality), log);
  }

  /** Bytes B, G, R, A of a smooth picture. */
  private static byte[] smooth(int alpha) {
    ByteBuffer pixels = ByteBuffer.allocate(4 * WIDTH * HEIGHT);
    for (int i = 0; i < WIDTH * HEIGHT; i++) {
      int x = i % WIDTH;
      int y = i / WIDTH;
      pixels.put(new byte[] {
        (byte) (x + y + 40), (byte) (250 - 4 * y), (byte) (2 * x + 30), (byte) alpha
      });
    }
    return pixels.array();
  }

  private static byte[] bothWays() {
    ByteBuffer source = direct(smooth(90)); // alpha must not matter
    byte[] file = encode(source, WIDTH, HEIGHT, 95);
    int end = file.length;
    check(file[0] == -1 && file[1] == -40 && file[end - 2] == -1 && file[end - 1] == -39,
        "a JPEG starts with FF D8 and ends with FF D9");
    int[] size = {-1, -2, -3};
    byte[] decoded = bytes(
        DECODE.call("own file", () -> CodecDataAlgorithm.JPEG2ARGB(direct(file), size)));
    check(Arrays.equals(size, new int[] {WIDTH, HEIGHT, -3}), "size array");
    byte[] expected = smooth(255);
    int worst = Math.abs(decoded.length - expected.length);
    for (int i = 0; i < Math.min(decoded.length, expected.length); i++) {
      worst = Math.max(worst, Math.abs((decoded[i] & 255) - (expected[i] & 255)));
    }
    check(worst <= 6, "own file: off by " + worst);

    byte[][] files = new byte[4][];
    Arrays.setAll(files, i -> encode(source, WIDTH, HEIGHT, new int[] {-5, 0, 100, 200}[i]));
    check(Arrays.equals(files[0], files[1]) && Arrays.equals(files[2], files[3])
        && files[1].length < file.length && file.length < files[2].length, "quality");
    return file;
  }

  public static void main(String[] args) {
    byte[] file = bothWays();
    ByteBuffer[] hostile = {
      null, ByteBuffer.wrap(file), direct(new byte[0]), direct(random(5000)), direct(new byte[5000]),
      direct(new byte[] {1}), direct(new byte[] {-1, -40}), direct(Arrays.copyOf(file, 300))
    };
    for (ByteBuffer buffer : hostile) {
      int[] size = {-7, -8};
      Object result = DECODE.call("hostile bytes",
          () -> CodecDataAlgorithm.JPEG2ARGB(buffer, size), DECODE.line("decode fail"));
      check(result == null && size[0] == -7 && size[1] == -8, "result of hostile bytes");
    }
    for (int[] bad : new int[][] {null, {}, {0}}) {
      DECODE.refuses("a bad array", () -> CodecDataAlgorithm.JPEG2ARGB(direct(file), bad));
    }
    ENCODE.refusesBadImages(256, (buffer, w, h) -> CodecDataAlgorithm.ARGB2JPEG(buffer, w, h, 90));
    ByteBuffer row = direct(new byte[4 * 65501]);
    check(encode(row, 65500, 1, 90) != null, "longest row of a JPEG");
    check(encode(row, 65501, 1, 90, ENCODE.line("encode fail")) == null, "a row too long");
    finish();
  }
}
