import com.orvik.camera.common.Native.YUVAlgorithm;
import java.nio.ByteBuffer;

/** Conversions and rotation through the virtual machine. */
final class YuvAlgorithmTest extends Harness {
  private static final int[][] SIZES = { // even ones first, the only ones that rotate
    {2, 2}, {4, 2}, {2, 4}, {64, 48}, {642, 36}, {3, 3}, {5, 4}, {1, 1}, {7, 2}, {2, 3}, {33, 17}
  };

  private static Native method(String returns, String name, String arguments) {
    return new Native(returns, "YUVAlgorithm", name, arguments);
  }

  /** A chroma byte past the frame's end repeats that of the block row above; 128 without one. */
  private static int chroma(byte[] frame, int luma, int at, int rowBytes) {
    if (at >= luma / 2) {
      return chroma(frame, luma, at - rowBytes, rowBytes);
    }
    return at < 0 ? 128 : frame[luma + at] & 255;
  }

  private static byte[] decode(byte[] frame, int w, int h, int v) {
    ByteBuffer argb = ByteBuffer.allocate(4 * w * h);
    for (int i = 0; i < w * h; i++) {
      int rowBytes = (w + 1) / 2 * 2;
      int pair = i / w / 2 * rowBytes + i % w / 2 * 2;
      int[] bgr = toBgr(frame[i] & 255, chroma(frame, w * h, pair + 1 - v, rowBytes),
          chroma(frame, w * h, pair + v, rowBytes));
      argb.put((byte) bgr[0]).put((byte) bgr[1]).put((byte) bgr[2]).put((byte) 255);
    }
    return argb.array();
  }

  /** A block's chroma comes from its bottom-left pixel; bytes past the frame's end are dropped. */
  private static byte[] encode(byte[] argb, int w, int h, int v) {
    byte[] frame = new byte[3 * w * h / 2];
    int chroma = w * h;
    for (int i = 0; i < w * h; i++) {
      byte[] yuv = toYuv(argb[4 * i] & 255, argb[4 * i + 1] & 255, argb[4 * i + 2] & 255);
      frame[i] = yuv[0];
      boolean bottomLeft = (i / w % 2 == 1 || i / w == h - 1) && i % w % 2 == 0;
      for (int k = 0; bottomLeft && k < 2 && chroma < frame.length; k++) {
        frame[chroma++] = yuv[k == v ? 2 : 1];
      }
    }
    return frame;
  }

  /** `v` is the place of the V byte in a pair. */
  private static void conversion(String name, boolean decodes, int v, ImageCall body) {
    Native method = method("_jobject*", name, "jobject, jint, jint");
    for (int[] size : SIZES) {
      int w = size[0];
      int h = size[1];
      byte[] source = random(decodes ? 3 * w * h / 2 : 4 * w * h);
      Object result = method.call(w + "x" + h, () -> body.run(direct(source), w, h));
      byte[] expected = decodes ? decode(source, w, h, v) : encode(source, w, h, v);
      same(bytes((ByteBuffer) result), expected, name + " " + w + "x" + h);
    }
    method.refusesBadImages(decodes ? 96 : 256, body);
  }

  private static void rotatePlane(byte[] from, byte[] to, int at, int w, int h, int unit, int by) {
    for (int i = 0; i < w * h; i++) {
      int quarter = by == 90 ? i % w * h + h - 1 - i / w : (w - 1 - i % w) * h + i / w;
      int source = by == 180 ? w * h - 1 - i : quarter;
      System.arraycopy(from, at + source * unit, to, at + i * unit, unit);
    }
  }

  private static Object rotate(ByteBuffer from, ByteBuffer to, int w, int h, int degrees) {
    YUVAlgorithm.rotateYUV(from, to, w, h, degrees);
    return null;
  }

  private static void rotation(int degrees) {
    Native method = method("void", "rotateYUV", "jobject, jobject, jint, jint, jint");
    for (int i = 0; i < 5; i++) {
      int w = SIZES[i][0];
      int h = SIZES[i][1];
      byte[] source = random(3 * w * h / 2);
      byte[] expected = random(source.length);
      ByteBuffer to = direct(expected);
      if (degrees >= 90) { // others leave it as it is
        rotatePlane(source, expected, 0, w, h, 1, degrees);
        rotatePlane(source, expected, w * h, w / 2, h / 2, 2, degrees);
      }
      method.call(w + "x" + h, () -> rotate(direct(source), to, w, h, degrees));
      same(bytes(to), expected, "rotateYUV " + w + "x" + h + " by " + degrees);
    }
    byte[] content = random(200);
    ByteBuffer other = direct(content);
    ByteBuffer half = other.slice(0, 96);
    method.refusesBadImages(96, (buffer, w, h) -> rotate(other, buffer, w, h, degrees));
    method.refusesBadImages(96, (buffer, w, h) -> rotate(buffer, other, w, h, degrees));
    method.refuses("odd width", () -> rotate(direct(content), other, 7, 8, degrees));
    method.refuses("odd height", () -> rotate(direct(content), other, 8, 7, degrees));
    if (degrees >= 90) {
      method.refuses("in place", () -> rotate(half, half, 8, 8, degrees));
      method.refuses("overlap", () -> rotate(half, other.slice(95, 96), 8, 8, degrees));
      method.refuses("overlap", () -> rotate(other.slice(95, 96), half, 8, 8, degrees));
    } else {
      method.call("in place", () -> rotate(half, half, 8, 8, degrees));
    }
    same(bytes(other), content, "rotateYUV with bad input");
  }

  public static void main(String[] args) {
    conversion("YUV2ARGB", true, 1, YUVAlgorithm::YUV2ARGB);
    conversion("YVU2ARGB", true, 0, YUVAlgorithm::YVU2ARGB);
    conversion("ARGB2YUV", false, 1, YUVAlgorithm::ARGB2YUV);
    conversion("ARGB2YVU", false, 0, YUVAlgorithm::ARGB2YVU);
    for (int degrees : new int[] {90, 180, 270, 0, 45}) {
      rotation(degrees);
    }
    check(null == method("_jobject*", "minify", "jobject, jint, jint, jint")
        .call("", () -> YUVAlgorithm.minify(null, 2, -2, 1)), "minify gives null");
    check(null == method("_jintArray*", "convertToARGB", "jobject, jint, jint")
        .call("", () -> YUVAlgorithm.convertToARGB(null, 2, 2)), "convertToARGB gives null");
    finish();
  }
}
