import com.orvik.camera.common.Native.CameraFrames.Plane;
import com.orvik.camera.common.Native.Effect;
import com.orvik.camera.common.Native.EffectSettings;
import com.orvik.camera.common.Native.Frame;
import com.orvik.camera.common.Native.Images;
import com.orvik.camera.common.Native.Pixels;
import com.orvik.camera.common.Native.YUVAlgorithm;
import com.sun.management.OperatingSystemMXBean;
import java.lang.invoke.MethodHandle;
import java.lang.invoke.MethodType;
import java.lang.management.ManagementFactory;
import java.lang.management.ThreadMXBean;
import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.Random;
import jdk.incubator.foreign.CLinker;
import jdk.incubator.foreign.FunctionDescriptor;
import jdk.incubator.foreign.MemoryAddress;
import jdk.incubator.foreign.MemorySegment;
import jdk.incubator.foreign.SymbolLookup;

/**
 * CPU time of Images at 12 megapixels in a real virtual machine, as ratios to the routine, copy or
 * codec that does the same work. All buffers have been touched; both sides of a ratio take turns.
 */
final class ImagesBench {
  private static final int W = 4000;
  private static final int H = 3000;
  private static final OperatingSystemMXBean SYSTEM =
      (OperatingSystemMXBean) ManagementFactory.getOperatingSystemMXBean();

  private static final ThreadMXBean THREADS = ManagementFactory.getThreadMXBean();

  private interface Body {
    void run() throws Throwable;
  }

  /** CPU time of one run; of all threads, which the system counts in steps of 10 ms. */
  private static double milliseconds(boolean onThisThread, Body body) throws Throwable {
    int runs = onThisThread ? 1 : 8;
    long before = onThisThread ? THREADS.getCurrentThreadCpuTime() : SYSTEM.getProcessCpuTime();
    for (int i = 0; i < runs; i++) {
      body.run();
    }
    long after = onThisThread ? THREADS.getCurrentThreadCpuTime() : SYSTEM.getProcessCpuTime();
    return (after - before) / 1e6 / runs;
  }

  private static void compare(String what, boolean onThisThread, double bound, Body one, Body other)
      throws Throwable {
    int turns = onThisThread ? 31 : 5;
    double[] a = new double[turns], b = new double[turns];
    for (int i = -1; i < turns; i++) {
      double first = milliseconds(onThisThread, one), second = milliseconds(onThisThread, other);
      if (i >= 0) {
        a[i] = first;
        b[i] = second;
      }
    }
    Arrays.sort(a);
    Arrays.sort(b);
    System.out.printf("%-44s %8.2f ms %8.2f ms   ratio %.2f%s%n", what, a[turns / 2], b[turns / 2],
        a[turns / 2] / b[turns / 2], bound > 0 ? " (at most " + bound + ")" : "");
  }

  private static ByteBuffer filled(int bytes) {
    byte[] content = new byte[bytes];
    new Random(1).nextBytes(content);
    ByteBuffer buffer = ByteBuffer.allocateDirect(bytes).put(content);
    buffer.clear();
    return buffer;
  }

  /** The exported routine, called without a border of the library's own. */
  private static MethodHandle decoder() {
    MemoryAddress address = SymbolLookup.loaderLookup().lookup("decodeYVU2ARGB_OpenGL").get();
    return CLinker.getInstance().downcallHandle(address,
        MethodType.methodType(void.class, MemoryAddress.class, MemoryAddress.class, MemoryAddress.class,
            int.class, int.class, int.class, int.class),
        FunctionDescriptor.ofVoid(CLinker.C_POINTER, CLinker.C_POINTER, CLinker.C_POINTER, CLinker.C_INT,
            CLinker.C_INT, CLinker.C_INT, CLinker.C_INT));
  }

  public static void main(String[] args) throws Throwable {
    ByteBuffer yuv = filled(W * H * 3 / 2), argb = filled(4 * W * H), copy = filled(W * H * 3 / 2);
    Frame frame = Frame.of(yuv, W, H, Frame.Chroma.NV21), packed = Frame.of(copy, W, H, Frame.Chroma.NV21);
    Pixels bgra = Pixels.of(argb, W, H, Pixels.Order.BGRA), rgba = Pixels.of(argb, W, H, Pixels.Order.RGBA);
    Images.decode(frame, bgra); // loads the library, in which the routine is looked up
    MethodHandle decoder = decoder();
    MemoryAddress source = MemorySegment.ofByteBuffer(yuv).address();
    MemoryAddress target = MemorySegment.ofByteBuffer(argb).address();
    Body routine = () -> {
      decoder.invokeExact(target, source, source.addOffset(W * H), W, H, W, W);
    };
    compare("decode to BGRA / the exported routine", true, 1.25, () -> Images.decode(frame, bgra), routine);
    compare("decode to RGBA / the exported routine", true, 1.25, () -> Images.decode(frame, rgba), routine);
    compare("YVU2ARGB / the exported routine", true, 0, () -> YUVAlgorithm.YVU2ARGB(yuv, W, H), routine);

    ByteBuffer chroma = yuv.slice(W * H, W * H / 2);
    Plane y = new Plane(yuv, W, 1), v = new Plane(chroma, W, 2), u = new Plane(chroma.slice(1, W * H / 2 - 1), W, 2);
    ByteBuffer padded = filled((W + 64) * H * 3 / 2), paddedChroma = padded.slice((W + 64) * H, (W + 64) * H / 2);
    Plane y2 = new Plane(padded, W + 64, 1), v2 = new Plane(paddedChroma, W + 64, 2);
    Plane u2 = new Plane(paddedChroma.slice(1, (W + 64) * H / 2 - 1), W + 64, 2);
    Body memcpy = () -> copy.duplicate().put(yuv.duplicate());
    compare("pack / copy", true, 1.3, () -> Images.pack(y, u, v, W, H, null, 0, packed), memcpy);
    compare("pack of padded rows / copy", true, 1.3, () -> Images.pack(y2, u2, v2, W, H, null, 0, packed), memcpy);
    Frame turned = Frame.of(copy, H, W, Frame.Chroma.NV21);
    compare("pack turned by 90 / copy", true, 0, () -> Images.pack(y, u, v, W, H, null, 90, turned), memcpy);

    for (int i = 0; i < W * H * 4; i++) { // a photo's smoothness and noise
      int x = i / 4 % W, row = i / 4 / W;
      argb.put(i, (byte) (128 + 90 * Math.sin(x / 190.0 + i % 4) * Math.cos(row / 140.0) + (x * 7 + row * 13) % 9));
    }
    ByteBuffer file = ByteBuffer.allocateDirect(W * H), result = filled(W * H);
    int size = Images.encodeJpeg(bgra, 90, file);
    System.out.println("a JPEG of " + size + " bytes");
    Body codec = () -> {
      Images.decodeJpeg(file, bgra, 1);
      Images.encodeJpeg(bgra, 90, result);
    };
    for (Effect effect : new Effect[] {Effect.PRETTY_SWEET, Effect.SEPIA, Effect.LOMO_FUN, Effect.SKETCH}) {
      compare("JPEG through " + effect + " / decode and encode", false,
          effect == Effect.PRETTY_SWEET || effect == Effect.SEPIA ? 1.1 : 0, // the others take their time
          () -> Images.applyToJpeg(effect, EffectSettings.DEFAULT, file, 90, result), codec);
    }
    compare("SEPIA in place / decode", false, 0, () -> Images.apply(Effect.SEPIA, bgra), routine);
    compare("SEPIA, half of it / decode", false, 0,
        () -> Images.apply(Effect.SEPIA, bgra, bgra, EffectSettings.DEFAULT.amount(0.5)), routine);
    compare("BLUR in place / decode", false, 0, () -> Images.apply(Effect.BLUR, bgra), routine);
  }
}
