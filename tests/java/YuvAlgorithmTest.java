import com.orvik.camera.common.Native.YUVAlgorithm;
import java.nio.ByteBuffer;

/** Conversions and rotation through the virtual machine, with good and bad buffers of any size. */
final class YuvAlgorithmTest extends Harness {
  private static final int[][] SIZES = { // even ones first, which alone can be rotated
    {2, 2}, {2, 4}, {64, 48}, {642, 36}, {3, 3}, {5, 4}, {1, 1}, {7, 2}, {2, 3}, {33, 17}
  };

  private static Native method(String returns, String name, String arguments) {
    return new Native(returns, "YUVAlgorithm", name, arguments);
  }

  private static void conversion(String name, ImageCall body, boolean decodes) {
    Native method = method("_jobject*", name, "jobject, jint, jint");
    for (int[] size : SIZES) {
      int pixels = size[0] * size[1];
      byte[] source = random(decodes ? 3 * pixels / 2 : 4 * pixels);
      Object result = method.call(name, () -> body.run(direct(source), size[0], size[1]));
      int got = bytes((ByteBuffer) result).length;
      check(got == (decodes ? 4 * pixels : 3 * pixels / 2), name + " gave " + got + " bytes");
    }
    method.refusesBadImages(decodes ? 96 : 256, body);
  }

  private static Object rotate(ByteBuffer from, ByteBuffer to, int w, int h, int degrees) {
    YUVAlgorithm.rotateYUV(from, to, w, h, degrees);
    return null;
  }

  private static void rotation(int degrees, boolean turns) {
    Native method = method("void", "rotateYUV", "jobject, jobject, jint, jint, jint");
    for (int i = 0; i < 4; i++) {
      int w = SIZES[i][0];
      int h = SIZES[i][1];
      ByteBuffer from = direct(random(3 * w * h / 2));
      method.call(w + "x" + h, () -> rotate(from, direct(bytes(from)), w, h, degrees));
    }
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
    conversion("YUV2ARGB", YUVAlgorithm::YUV2ARGB, true);
    conversion("YVU2ARGB", YUVAlgorithm::YVU2ARGB, true);
    conversion("ARGB2YUV", YUVAlgorithm::ARGB2YUV, false);
    conversion("ARGB2YVU", YUVAlgorithm::ARGB2YVU, false);
    for (int degrees : new int[] {0, 45, 90, 180, 270}) {
      rotation(degrees, degrees >= 90);
    }
    check(null == method("_jobject*", "minify", "jobject, jint, jint, jint")
        .call("", () -> YUVAlgorithm.minify(null, 2, -2, 1)), "minify gives null");
    check(null == method("_jintArray*", "convertToARGB", "jobject, jint, jint")
        .call("", () -> YUVAlgorithm.convertToARGB(null, 2, 2)), "convertToARGB gives null");
    finish();
  }
}
