import com.orvik.camera.common.Native.CodecDataAlgorithm;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.Arrays;
import javax.imageio.ImageIO;

/** JPEG files both ways through the virtual machine, with Java's own codec as the judge. */
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

  private static byte[] decode(byte[] file, String what) {
    int[] size = {-1, -2, -3};
    ByteBuffer pixels = DECODE.call(what, () -> CodecDataAlgorithm.JPEG2ARGB(direct(file), size));
    check(Arrays.equals(size, new int[] {WIDTH, HEIGHT, -3}), what + ": size array");
    return bytes(pixels);
  }

  /** A smooth picture, drawn into the raster so that no colour profile meddles. */
  private static BufferedImage smooth() {
    BufferedImage image = new BufferedImage(WIDTH, HEIGHT, BufferedImage.TYPE_INT_RGB);
    for (int i = 0; i < WIDTH * HEIGHT; i++) {
      int x = i % WIDTH;
      int y = i / WIDTH;
      image.getRaster().setPixel(x, y, new int[] {2 * x + 30, 250 - 4 * y, x + y + 40});
    }
    return image;
  }

  /** Bytes B, G, R, A of a colour image. */
  private static byte[] pixels(BufferedImage image, int alpha) {
    ByteBuffer out = ByteBuffer.allocate(4 * WIDTH * HEIGHT);
    for (int i = 0; i < WIDTH * HEIGHT; i++) {
      int[] p = image.getRaster().getPixel(i % WIDTH, i / WIDTH, (int[]) null);
      out.put((byte) p[2]).put((byte) p[1]).put((byte) p[0]).put((byte) alpha);
    }
    return out.array();
  }

  private static byte[] write(BufferedImage image, String format) throws IOException {
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    ImageIO.write(image, format, bytes);
    return bytes.toByteArray();
  }

  private static void near(byte[] got, byte[] expected, int rows, int tolerance, String what) {
    int worst = Math.abs(got.length - expected.length);
    for (int i = 0; i < 4 * WIDTH * rows; i++) {
      worst = Math.max(worst, Math.abs((got[i] & 255) - (expected[i] & 255)));
    }
    check(worst <= tolerance, what + ": off by " + worst);
  }

  private static void bothWays(BufferedImage image) throws IOException {
    ByteBuffer source = direct(pixels(image, 90)); // alpha must not matter
    byte[] file = encode(source, WIDTH, HEIGHT, 95);
    int end = file.length;
    check(file[0] == -1 && file[1] == -40 && file[end - 2] == -1 && file[end - 1] == -39,
        "a JPEG starts with FF D8 and ends with FF D9");
    byte[] decoded = decode(file, "own file");
    near(decoded, pixels(image, 255), HEIGHT, 6, "own file");
    byte[] judged = pixels(ImageIO.read(new ByteArrayInputStream(file)), 255);
    near(decoded, judged, HEIGHT, 4, "own file, as the judge sees it");

    byte[][] files = new byte[4][];
    Arrays.setAll(files, i -> encode(source, WIDTH, HEIGHT, new int[] {-5, 0, 100, 200}[i]));
    check(Arrays.equals(files[0], files[1]) && Arrays.equals(files[2], files[3])
        && files[1].length < file.length && file.length < files[2].length, "quality");
  }

  private static void foreignFiles(BufferedImage colour, byte[] baseline) throws IOException {
    byte[] whole = decode(baseline, "baseline");
    near(whole, pixels(colour, 255), HEIGHT, 12, "baseline");

    byte[] cut = decode(Arrays.copyOf(baseline, baseline.length * 3 / 4), "truncated");
    near(cut, whole, 8, 0, "top of a truncated file");
    byte[] lastPixel = Arrays.copyOfRange(cut, cut.length - 4, cut.length);
    same(lastPixel, new byte[] {-128, -128, -128, -1}, "missing part of a truncated file");

    byte[][] hostile = {
      write(colour, "png"), random(5000), new byte[5000], {1}, {-1, -40},
      {-1, -40, -1, -39}, Arrays.copyOf(baseline, 300)
    };
    for (byte[] bytes : hostile) {
      int[] size = {-7, -8};
      Object result = DECODE.call("hostile bytes",
          () -> CodecDataAlgorithm.JPEG2ARGB(direct(bytes), size), DECODE.line("decode fail"));
      check(result == null && size[0] == -7 && size[1] == -8, "result of hostile bytes");
    }
  }

  public static void main(String[] args) throws IOException {
    BufferedImage colour = smooth();
    byte[] baseline = write(colour, "jpeg");
    bothWays(colour);
    foreignFiles(colour, baseline);
    for (ByteBuffer bad : new ByteBuffer[] {null, ByteBuffer.wrap(baseline), direct(new byte[0])}) {
      DECODE.refuses("a bad buffer", () -> CodecDataAlgorithm.JPEG2ARGB(bad, new int[2]));
    }
    for (int[] bad : new int[][] {null, {}, {0}}) {
      DECODE.refuses("a bad array", () -> CodecDataAlgorithm.JPEG2ARGB(direct(baseline), bad));
    }
    ENCODE.refusesBadImages(256, (buffer, w, h) -> CodecDataAlgorithm.ARGB2JPEG(buffer, w, h, 90));
    ByteBuffer row = direct(new byte[4 * 65501]);
    check(encode(row, 65500, 1, 90) != null, "longest row of a JPEG");
    check(encode(row, 65501, 1, 90, ENCODE.line("encode fail")) == null, "a row too long");
    finish();
  }
}
