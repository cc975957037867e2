import com.orvik.camera.common.Native.YUVAlgorithm;
import java.nio.ByteBuffer;

/** Conversions and rotation through the virtual machine: buffers of any size, and one example. */
final class YuvAlgorithmTest extends Harness {
  private static final int[][] SIZES = { // even ones first, which alone can be rotated
    {2, 2}, {2, 4}, {64, 48}, {642, 36}, {3, 3}, {5, 4}, {1, 1}, {7, 2}, {2, 3}, {33, 17}
  };

  private static Native method(String returns, String name, String arguments) {
    return new Native(returns, "YUVAlgorithm", name, arguments);
  }

  private static byte[] toBytes(int... values) {
    byte[] bytes = new byte[values.length];
    for (int i = 0; i < values.length; i++) {
      bytes[i] = (byte) values[i];
    }
    return bytes;
  }

  /** `example` has 2 x 2 pixels. */
  private static void conversion(String name, ImageCall body, byte[] example, byte[] expected) {
    Native method = method("_jobject*", name, "jobject, jint, jint");
    boolean decodes = example.length == 6;
    for (int[] size : SIZES) {
      int pixels = size[0] * size[1];
      byte[] source = random(decodes ? 3 * pixels / 2 : 4 * pixels);
      Object result = method.call(name, () -> body.run(direct(source), size[0], size[1]));
      int got = bytes((ByteBuffer) result).length;
      check(got == (decodes ? 4 * pixels : 3 * pixels / 2), name + " gave " + got + " bytes");
    }
    same(bytes((ByteBuffer) body.run(direct(example), 2, 2)), expected, name);
    method.refusesBadImages(decodes ? 96 : 256, body);
  }

  private static Object rotate(ByteBuffer from, ByteBuffer to, int w, int h, int degrees) {
    YUVAlgorithm.rotateYUV(from, to, w, h, degrees);
    return null;
  }

  /** What a frame of 4 x 2 pixels becomes; nothing by default. */
  private static void rotation(int degrees, int... expected) {
    Native method = method("void", "rotateYUV", "jobject, jobject, jint, jint, jint");
    boolean turns = expected.length > 0;
    for (int i = 0; i < 4; i++) {
      int w = SIZES[i][0];
      int h = SIZES[i][1];
      ByteBuffer from = direct(random(3 * w * h / 2));
      method.call(w + "x" + h, () -> rotate(from, direct(bytes(from)), w, h, degrees));
    }
    ByteBuffer to = direct(new byte[12]);
    rotate(direct(toBytes(1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 20, 21)), to, 2, 4, degrees);
    same(bytes(to), turns ? toBytes(expected) : new byte[12], "turned by " + degrees);

    byte[] content = random(200);
    ByteBuffer other = direct(content);
    ByteBuffer half = other.slice(0, 96);
    method.refusesBadImages(96, (buffer, w, h) -> rotate(other, buffer, w, h, degrees));
    method.refusesBadImages(96, (buffer, w, h) -> rotate(buffer, other, w, h, degrees));
    method.refuses("odd width", () -> rotate(direct(content), other, 7, 8, degrees));
    method.refuses("odd height", () -> rotate(direct(content), other, 8, 7, degrees));
    if (turns) {
      method.refuses("in place", () -> rotate(half, half, 8, 8, degrees));
      method.refuses("overlap", () -> rotate(half, other.slice(95, 96), 8, 8, degrees));
      method.refuses("overlap", () -> rotate(other.slice(95, 96), half, 8, 8, degrees));
    } else {
      method.call("in place", () -> rotate(half, half, 8, 8, degrees));
    }
    same(bytes(other), content, "rotateYUV with bad input");
  }

  public static void main(String[] args) {
    byte[] pink = toBytes(
        255, 175, 255, 255, 255, 175, 255, 255, 255, 175, 255, 255, 255, 175, 255, 255);
    conversion("YUV2ARGB", YUVAlgorithm::YUV2ARGB, toBytes(255, 255, 255, 255, 128, 255), pink);
    conversion("YVU2ARGB", YUVAlgorithm::YVU2ARGB, toBytes(255, 255, 255, 255, 255, 128), pink);
    byte[] red = toBytes(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0); // bottom left
    conversion("ARGB2YUV", YUVAlgorithm::ARGB2YUV, red, toBytes(16, 16, 81, 16, 90, 239));
    conversion("ARGB2YVU", YUVAlgorithm::ARGB2YVU, red, toBytes(16, 16, 81, 16, 239, 90));
    rotation(90, 4, 8, 3, 7, 2, 6, 1, 5, 20, 21, 10, 11);
    rotation(180, 8, 7, 6, 5, 4, 3, 2, 1, 20, 21, 10, 11);
    rotation(270, 5, 1, 6, 2, 7, 3, 8, 4, 10, 11, 20, 21);
    rotation(0);
    rotation(45);
    check(null == method("_jobject*", "minify", "jobject, jint, jint, jint")
        .call("", () -> YUVAlgorithm.minify(null, 2, -2, 1)), "minify gives null");
    check(null == method("_jintArray*", "convertToARGB", "jobject, jint, jint")
        .call("", () -> YUVAlgorithm.convertToARGB(null, 2, 2)), "convertToARGB gives null");
    finish();
  }
}
