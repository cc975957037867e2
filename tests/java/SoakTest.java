import com.orvik.camera.common.Native.CodecDataAlgorithm;
import com.orvik.camera.common.Native.EffectAlgorithm;
import com.orvik.camera.common.Native.SFBEngineAlgorithm;
import com.orvik.camera.common.Native.YUVAlgorithm;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.function.Consumer;
import java.util.function.UnaryOperator;

/** All natives from several threads at once, for a while. */
final class SoakTest extends Harness {
  private static final int W = 64;
  private static final int H = 48;
  private static final int KEPT_RESULTS = 4000; // their memory is never freed

  private static UnaryOperator<ByteBuffer> inPlace(Consumer<ByteBuffer> call) {
    return frame -> {
      call.accept(frame);
      return frame;
    };
  }

  public static void main(String[] args) throws IOException, InterruptedException {
    Files.copy(Path.of(System.getProperty("engine")), freshPath("system/lib64/libSFB.so"));
    ByteBuffer argb = ByteBuffer.allocateDirect(W * H * 4).put(random(W * H * 4));
    byte[] jpeg = CodecDataAlgorithm.ARGB2JPEG(argb, W, H, 90);
    byte[] frame = random(W * H * 3 / 2);
    record Call(byte[] input, boolean keeps, UnaryOperator<ByteBuffer> run) {}
    List<Call> calls = List.of(
        new Call(frame, false, inPlace(b -> EffectAlgorithm.Effect(b, W, H, "PrettyBlue"))),
        new Call(frame, false, inPlace(b -> EffectAlgorithm.Effect(b, W - 1, H - 1, "PrettySweet"))),
        new Call(frame, false, inPlace(b -> SFBEngineAlgorithm.SFBProcess(b, W, H, 5, 6, 7))),
        new Call(bytes(argb), false,
            b -> ByteBuffer.wrap(CodecDataAlgorithm.ARGB2JPEG(b, W, H, 90))),
        new Call(frame, true, b -> YUVAlgorithm.YVU2ARGB(b, W, H)),
        new Call(jpeg, true, b -> CodecDataAlgorithm.JPEG2ARGB(b, new int[2])));
    List<byte[]> expected = new ArrayList<>();
    for (Call call : calls) {
      expected.add(bytes(call.run.apply(ByteBuffer.allocateDirect(call.input.length).put(call.input))));
    }
    int seconds = Integer.parseInt(System.getenv().getOrDefault("SOAK_SECONDS", "5"));
    long end = System.nanoTime() + seconds * 1_000_000_000L;
    AtomicInteger kept = new AtomicInteger();
    AtomicInteger made = new AtomicInteger();
    List<Thread> threads = new ArrayList<>();
    for (int t = 0; t < 6; t++) {
      int step = t + 1;
      threads.add(new Thread(() -> {
        for (int i = step; System.nanoTime() < end; i += step) {
          Call call = calls.get(i % calls.size());
          if (call.keeps && kept.incrementAndGet() > KEPT_RESULTS) {
            continue;
          }
          ByteBuffer input = ByteBuffer.allocateDirect(call.input.length).put(call.input);
          check(Arrays.equals(bytes(call.run.apply(input)), expected.get(i % calls.size())), "call " + i);
          if (made.incrementAndGet() % 1000 == 0) {
            takeLog();
          }
        }
      }));
    }
    threads.forEach(Thread::start);
    for (Thread thread : threads) {
      thread.join();
    }
    check(made.get() > 100, "calls were made");
    System.out.println(made + " calls");
    finish();
  }
}
