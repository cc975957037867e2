import com.orvik.camera.common.Native.CameraFrames;
import com.orvik.camera.common.Native.CameraFrames.Plane;
import com.orvik.camera.common.Native.YUVAlgorithm;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Collections;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;

/** Planes to frames and back, and the checks before a native is called. */
final class CameraFramesTest extends Harness {
  /** Positions and limits are ignored. */
  private static ByteBuffer moved(ByteBuffer buffer) {
    return buffer.limit(1).position(1);
  }

  /** Packs and unpacks planes that share memory, each cut off after its last sample. */
  private static void packs(int w, int h, int pad, int lumaStep, int step, boolean vFirst, boolean heap) {
    int lumaRow = w * lumaStep + pad;
    int row = w / 2 * step + pad;
    int first = lumaRow * h;
    int second = first + (step == 1 ? row * h / 2 : 1);
    int size = row * (h / 2 - 1) + (w / 2 - 1) * step + 1;
    byte[] memory = random(second + size);
    ByteBuffer all = heap ? ByteBuffer.wrap(memory.clone()) : direct(memory);
    Plane y = new Plane(moved(all.slice(0, lumaRow * (h - 1) + (w - 1) * lumaStep + 1)), lumaRow, lumaStep);
    Plane u = new Plane(moved(all.slice(vFirst ? second : first, size)), row, step);
    Plane v = new Plane(moved(all.slice(vFirst ? first : second, size)), row, step);
    byte[] packed = random(w * h * 3 / 2 + 5); // the last 5 bytes stay
    byte[] other = random(w * h * 3 / 2);
    ByteBuffer to = moved(direct(packed));
    ByteBuffer from = moved(direct(other));
    CameraFrames.pack(y, u, v, w, h, to);
    byte[] frame = bytes(to.duplicate().clear());
    CameraFrames.unpack(from, w, h, y, u, v);
    for (int i = 0; i < other.length; i++) {
      int pair = (i - w * h) / 2;
      int at = i < w * h ? i / w * lumaRow + i % w * lumaStep
          : (i % 2 == 0 == vFirst ? first : second) + pair / (w / 2) * row + pair % (w / 2) * step;
      packed[i] = memory[at];
      memory[at] = other[i];
    }
    String what = w + "x" + h + " pad " + pad + " steps " + lumaStep + " " + step + " v first " + vFirst;
    same(frame, packed, "packed " + what);
    same(bytes(all), memory, "unpacked " + what);
    for (ByteBuffer used : new ByteBuffer[] {to, from, y.buffer(), u.buffer(), v.buffer()}) {
      check(used.limit() == 1 && used.position() == 1, "positions stay");
    }
  }

  private static void refusals() {
    ByteBuffer frame = ByteBuffer.allocateDirect(24);
    Plane y = new Plane(ByteBuffer.allocate(16), 4, 1);
    Plane c = new Plane(ByteBuffer.allocate(5), 3, 1);
    Plane readOnly = new Plane(c.buffer().asReadOnlyBuffer(), 3, 1);
    refuses("buffer is null", () -> new Plane(null, 1, 1));
    refuses("rowStride is 0, but must be at least 1", () -> new Plane(frame, 0, 1));
    CameraFrames.pack(y, readOnly, c, 4, 4, frame); // being read is allowed
    byte[] content = random(24);
    ByteBuffer good = direct(content);
    refuses("v plane is null", () -> CameraFrames.pack(y, c, null, 4, 4, good));
    refuses("u plane has a row stride of 3, but 2 samples with a pixel stride of 3 take 4 bytes",
        () -> CameraFrames.pack(y, new Plane(frame, 3, 3), c, 4, 4, good));
    refuses("v plane has 5 bytes, but 2x2 samples with strides of 4 and 1 take 6",
        () -> CameraFrames.pack(y, c, new Plane(c.buffer(), 4, 1), 4, 4, good));
    refuses("y plane has 16 bytes, but 4x4 samples with strides of 2147483647 and 1 take 6442450945",
        () -> CameraFrames.pack(new Plane(y.buffer(), Integer.MAX_VALUE, 1), c, c, 4, 4, good));
    refuses("frame is read-only, but is to be written",
        () -> CameraFrames.pack(y, c, c, 4, 4, good.asReadOnlyBuffer()));
    refuses("v plane is read-only, but is to be written",
        () -> CameraFrames.unpack(good, 4, 4, y, c, readOnly));
    same(bytes(y.buffer()), new byte[16], "a refused plane");
    same(bytes(good), content, "a refused frame");
    refuses("width is 3, but must be even", () -> CameraFrames.pack(y, c, c, 3, 4));
    refuses("height is 3, but must be even", () -> CameraFrames.requireEvenFrame(good, 4, 3));
    refuses("height is 0, but must be at least 1", () -> CameraFrames.allocate(4, 0));
    refuses("2x715827883 pixels take more than 2147483647 bytes", () -> CameraFrames.bytes(2, 715827883));
    refuses("frame is null", () -> CameraFrames.requireFrame(null, 4, 4));
    refuses("frame is a heap buffer, but must be direct",
        () -> CameraFrames.requireFrame(ByteBuffer.allocate(24), 4, 4));
    refuses("frame has 24 bytes, but 5x4 pixels take 30", () -> CameraFrames.requireFrame(good, 5, 4));
    refuses("argb has 24 bytes, but 7x1 pixels take 28", () -> CameraFrames.requireArgb(good, 7, 1));
    refuses("1x536870912 pixels take more than 2147483647 bytes",
        () -> CameraFrames.requireArgb(good, 1, 536870912));
    check(CameraFrames.requireFrame(good, 3, 5) == good && CameraFrames.requireEvenFrame(good, 4, 4) == good
        && CameraFrames.requireArgb(good, 3, 2) == good, "good buffers pass");
    check(CameraFrames.bytes(5, 286331153) == Integer.MAX_VALUE, "the largest frame");
  }

  /** Applications are compiled for Java 8 or 11 and build tools of their time: no class may be newer. */
  private static void classVersions() throws Exception {
    String jar = CameraFrames.class.getProtectionDomain().getCodeSource().getLocation().toURI().getPath();
    int classes = 0;
    try (ZipFile files = new ZipFile(jar)) {
      for (ZipEntry file : Collections.list(files.entries())) {
        if (file.getName().endsWith(".class")) {
          int version = ByteBuffer.wrap(files.getInputStream(file).readNBytes(8)).getShort(6);
          check(version <= 55, file.getName() + " is of version " + version + ", newer than Java 11");
          classes++;
        }
      }
    }
    check(classes >= 7, "the jar has " + classes + " classes");
  }

  public static void main(String[] args) throws Exception {
    classVersions();
    int[][] sizes = {{2, 2}, {2, 6}, {8, 2}, {6, 4}, {66, 10}};
    for (int i = 0; i < 360; i++) {
      int pad = new int[] {0, 1, 13}[i / 5 % 3];
      packs(sizes[i % 5][0], sizes[i % 5][1], pad, 1 + i / 15 % 2, 1 + i / 30 % 3, i / 90 % 2 == 0, i < 180);
    }
    refusals();
    byte[] samples = {41, 41, 41, 41, (byte) 240, 110};
    ByteBuffer all = ByteBuffer.wrap(samples);
    Plane u = new Plane(all.slice(4, 1), 1, 1);
    ByteBuffer frame = CameraFrames.pack(new Plane(all, 2, 1), u, new Plane(all.slice(5, 1), 1, 1), 2, 2);
    Path maps = Path.of("/proc/self/maps");
    check(!Files.readString(maps).contains("libAlgorithm.so"), "the helper loads no library");
    ByteBuffer argb = YUVAlgorithm.YVU2ARGB(CameraFrames.requireFrame(frame, 2, 2), 2, 2);
    check(Files.readString(maps).contains("libAlgorithm.so"), "the native loads it");
    same(bytes(argb.slice(12, 4)), new byte[] {-1, 0, 0, -1}, "blue");
    finish();
  }
}
