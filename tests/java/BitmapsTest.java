import android.graphics.Bitmap;
import android.graphics.BitmapControl;
import android.graphics.ImageFormat;
import android.graphics.Rect;
import android.media.Image;
import com.orvik.camera.common.Native.Bitmaps;
import com.orvik.camera.common.Native.CameraFrames;
import com.orvik.camera.common.Native.Cancellation;
import com.orvik.camera.common.Native.Effect;
import com.orvik.camera.common.Native.EffectSettings;
import com.orvik.camera.common.Native.Frame;
import com.orvik.camera.common.Native.Images;
import com.orvik.camera.common.Native.Pixels;
import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.function.BiFunction;

/** Bitmaps against Images, over stand-ins for Android's classes that count the locks. */
final class BitmapsTest extends Harness {
  private static final int W = 22;
  private static final int H = 14;
  private static final int STRIDE = 4 * W + 12;
  private static final Frame FRAME = Frame.of(direct(random(W * H * 3 / 2)), W, H, Frame.Chroma.NV21);
  private static final EffectSettings SETTINGS = EffectSettings.DEFAULT.amount(0.5).parameter("radius", 0.7);
  private static final ByteBuffer FILE = direct(jpeg(2 * W, 2 * H));

  /** A method of Bitmaps, the same of Images, and the bitmap's name. The buffer takes what isn't pixels. */
  private record Operation(String argument, BiFunction<Bitmap, ByteBuffer, Object> ofBitmaps,
      BiFunction<Pixels, ByteBuffer, Object> ofImages) {
    boolean writes() {
      return !argument.equals("src");
    }
  }

  private static Object done(Runnable body) {
    body.run();
    return null;
  }

  private static final List<Operation> OPERATIONS = List.of(
      new Operation("image", (b, out) -> done(() -> Bitmaps.apply(Effect.PRETTY_SWEET, b)),
          (p, out) -> done(() -> Images.apply(Effect.PRETTY_SWEET, p))),
      new Operation("image", (b, out) -> done(() -> Bitmaps.apply(Effect.FILL_LIGHT, b, SETTINGS)),
          (p, out) -> done(() -> Images.apply(Effect.FILL_LIGHT, p, p, SETTINGS))),
      new Operation("dst", (b, out) -> done(() -> Bitmaps.decode(FRAME, b)),
          (p, out) -> done(() -> Images.decode(FRAME, p))),
      new Operation("dst", (b, out) -> done(() -> Bitmaps.decodeJpeg(FILE, 2, b)),
          (p, out) -> done(() -> Images.decodeJpeg(FILE, p, 2))),
      new Operation("src", (b, out) -> done(() -> Bitmaps.encode(b, frame(out))),
          (p, out) -> done(() -> Images.encode(p, frame(out)))),
      new Operation("src", (b, out) -> Bitmaps.encodeJpeg(b, 80, out),
          (p, out) -> Images.encodeJpeg(p, 80, out)),
      new Operation("src", (b, out) -> done(() -> copy(Bitmaps.copy(b), out)),
          (p, out) -> done(() -> copy(p, out))));

  private static Frame frame(ByteBuffer buffer) {
    return Frame.of(buffer, W, H, Frame.Chroma.NV12);
  }

  private static void copy(Pixels from, ByteBuffer to) {
    check(from.width() == W && from.height() == H && from.rowStride() == STRIDE
        && from.order() == Pixels.Order.RGBA, "the layout of a copy");
    to.duplicate().put(bytes(from.buffer()));
  }

  private static byte[] jpeg(int width, int height) {
    ByteBuffer file = ByteBuffer.allocateDirect(1 << 16);
    ByteBuffer pixels = ByteBuffer.allocateDirect(4 * width * height).put(random(4 * width * height));
    int size = Images.encodeJpeg(Pixels.of(pixels, width, height, Pixels.Order.RGBA), 90, file);
    return Arrays.copyOf(bytes(file), size);
  }

  private static Bitmap bitmap(boolean mutable, byte[] pixels) {
    return BitmapControl.of(W, H, Bitmap.Config.ARGB_8888, mutable, pixels);
  }

  private static void unlocked(String what) {
    check(BitmapControl.openLocks() == 0, what + ": " + BitmapControl.openLocks() + " locks are left");
  }

  private static void asImages(Operation operation) {
    byte[] memory = random(STRIDE * H);
    Bitmap bitmap = bitmap(operation.writes(), memory);
    ByteBuffer pixels = direct(memory);
    ByteBuffer ofBitmaps = direct(new byte[1 << 13]);
    ByteBuffer ofImages = direct(new byte[1 << 13]);
    int before = BitmapControl.locks();
    Object result = operation.ofBitmaps.apply(bitmap, ofBitmaps);
    Object expected =
        operation.ofImages.apply(new Pixels(pixels, W, H, STRIDE, Pixels.Order.RGBA), ofImages);
    check(Objects.equals(result, expected), "result " + result + ", not " + expected);
    same(BitmapControl.pixels(bitmap), bytes(pixels), "bitmap");
    same(bytes(ofBitmaps), bytes(ofImages), "buffer");
    check(Arrays.equals(memory, bytes(pixels)) != operation.writes(), "what is written");
    check(BitmapControl.locks() == before + 1, "locked once");
    unlocked("a good call");
  }

  private static void refusesBadBitmaps(Operation operation) {
    byte[] memory = random(STRIDE * H);
    String name = operation.argument + " ";
    String illegal = "java.lang.IllegalArgumentException: " + name;
    String state = "java.lang.IllegalStateException: " + name;
    Object[][] bad = {
      {null, "java.lang.NullPointerException: " + name + "is null"},
      {BitmapControl.recycled(bitmap(true, memory)), illegal + "is recycled"},
      {bitmap(false, memory), illegal + "is immutable, but is to be written"},
      {BitmapControl.failing(bitmap(true, memory), "getInfo", -1), state + "can't be locked: Android says -1"},
      {BitmapControl.failing(bitmap(true, memory), "lockPixels", -3), state + "can't be locked: Android says -3"},
      {BitmapControl.failing(bitmap(true, memory), "lockPixels", -2), "java.lang.ArithmeticException: lockPixels"},
      {BitmapControl.failing(bitmap(true, memory), "format", 4), state + "has the native format 4, but must have 1"},
      {BitmapControl.failing(bitmap(true, memory), "stride", 8),
        "java.lang.IllegalArgumentException: rowStride is 8, but 22 pixels take 88 bytes"},
      {BitmapControl.failing(bitmap(true, memory), "stride", 1 << 30), state + "can't be locked: Android says -100"},
    };
    for (Object[] row : bad) {
      Bitmap bitmap = (Bitmap) row[0];
      if (bitmap == null || bitmap.isMutable() || operation.writes()) {
        refused(operation, bitmap, memory, (String) row[1]);
      }
    }
    for (Bitmap.Config config : new Bitmap.Config[] {
      null, Bitmap.Config.ALPHA_8, Bitmap.Config.RGB_565, Bitmap.Config.RGBA_F16, Bitmap.Config.HARDWARE
    }) {
      refused(operation, BitmapControl.of(W, H, config, false, memory), memory,
          illegal + "has the configuration " + config + ", but must have ARGB_8888");
    }
    Bitmap stuck = BitmapControl.failing(bitmap(true, memory), "unlockPixels", -1);
    String got = thrown(() -> operation.ofBitmaps.apply(stuck, direct(new byte[1 << 13])));
    check(got.endsWith("the bitmap can't be unlocked: Android says -1"), "a failing unlock: " + got);
  }

  private static void refused(Operation operation, Bitmap bitmap, byte[] memory, String wanted) {
    ByteBuffer out = direct(new byte[1 << 13]);
    String got = thrown(() -> operation.ofBitmaps.apply(bitmap, out));
    check(got.equals(wanted), "refused with " + got + ", not " + wanted);
    check(bitmap == null || Arrays.equals(BitmapControl.pixels(bitmap), memory), wanted + ": pixels");
    same(bytes(out), new byte[1 << 13], wanted + ": buffer");
    unlocked(wanted);
  }

  /** What Images refuses, or stops, below a lock. */
  private static void failsWhileLocked() {
    byte[] memory = random(STRIDE * H);
    Bitmap bitmap = bitmap(true, memory);
    Cancellation cancelled = new Cancellation();
    cancelled.cancel();
    Frame small = Frame.allocate(2, 2, Frame.Chroma.NV21);
    ByteBuffer shortBuffer = ByteBuffer.allocateDirect(20);
    Runnable[] calls = {
      () -> Bitmaps.apply(null, bitmap),
      () -> Bitmaps.apply(Effect.PRETTY_SWEET, bitmap, null),
      () -> Bitmaps.apply(Effect.PRETTY_SWEET, bitmap, SETTINGS), // it has no radius
      () -> Bitmaps.apply(Effect.PRETTY_SWEET, bitmap, EffectSettings.DEFAULT.cancelledBy(cancelled)),
      () -> Bitmaps.decode(small, bitmap),
      () -> Bitmaps.decode(null, bitmap),
      () -> Bitmaps.encode(bitmap, small),
      () -> Bitmaps.encode(bitmap, null),
      () -> Bitmaps.decodeJpeg(FILE, 1, bitmap),
      () -> Bitmaps.decodeJpeg(FILE, 3, bitmap),
      () -> Bitmaps.decodeJpeg(direct(random(100)), 1, bitmap),
      () -> Bitmaps.encodeJpeg(bitmap, 101, direct(new byte[1 << 13])),
      () -> Bitmaps.encodeJpeg(bitmap, 90, shortBuffer),
      () -> Bitmaps.decode(null),
      () -> Bitmaps.decodeJpeg(null, 1),
      () -> Bitmaps.decodeJpeg(direct(random(100)), 1),
    };
    for (int i = 0; i < calls.length; i++) {
      String got = thrown(calls[i]);
      check(got.matches("java.(lang.(NullPointer|IllegalArgument)|util.concurrent.Cancellation)Exception.*"),
          "call " + i + " throws " + got);
      check(got.contains("Cancellation") == (i == 3), "call " + i + " throws " + got);
      same(BitmapControl.pixels(bitmap), memory, "call " + i);
      unlocked("call " + i);
    }
  }

  private static void makesBitmaps() {
    BitmapControl.padding = STRIDE - 4 * W;
    Bitmap[] made = {Bitmaps.decode(FRAME), Bitmaps.decodeJpeg(FILE, 2)};
    Bitmap[] filled = {bitmap(true, new byte[STRIDE * H]), bitmap(true, new byte[STRIDE * H])};
    Bitmaps.decode(FRAME, filled[0]);
    Bitmaps.decodeJpeg(FILE, 2, filled[1]);
    for (int i = 0; i < made.length; i++) {
      check(made[i].getWidth() == W && made[i].isMutable() && !BitmapControl.hasAlpha(made[i]), "made");
      same(BitmapControl.pixels(made[i]), BitmapControl.pixels(filled[i]), "a new bitmap");
    }
    unlocked("new bitmaps");
  }

  /** What a camera delivers, of twice the bitmaps' size. */
  private static Image image(int format, CameraFrames.Plane... samples) {
    Image.Plane[] planes = Arrays.stream(samples)
        .map(plane -> new Image.Plane(plane.buffer(), plane.rowStride(), plane.pixelStride()) {})
        .toArray(Image.Plane[]::new);
    return new Image(format, 2 * W, 2 * H, new Rect(4, 2, 4 + W, 2 + H), planes) {};
  }

  private static void packs() {
    int pairs = 2 * W * H; // of which v has the first bytes and u the second
    ByteBuffer chroma = direct(random(pairs));
    CameraFrames.Plane[] planes = {
      new CameraFrames.Plane(direct(random(4 * W * H)), 2 * W, 1),
      new CameraFrames.Plane(chroma.slice(1, pairs - 1), 2 * W, 2),
      new CameraFrames.Plane(chroma.slice(0, pairs - 1), 2 * W, 2)
    };
    Image image = image(ImageFormat.YUV_420_888, planes);
    Frame got = Frame.allocate(H, W, Frame.Chroma.NV21);
    Frame expected = Frame.allocate(H, W, Frame.Chroma.NV21);
    Bitmaps.pack(image, new Rect(6, 8, 6 + W, 8 + H), 90, got);
    Images.pack(planes[0], planes[1], planes[2], 2 * W, 2 * H, new Images.Crop(6, 8, W, H), 90, expected);
    same(bytes(got.buffer()), bytes(expected.buffer()), "a part, turned");
    Bitmaps.pack(image, frame(got.buffer()));
    Images.pack(
        planes[0], planes[1], planes[2], 2 * W, 2 * H, new Images.Crop(4, 2, W, H), 0, frame(expected.buffer()));
    same(bytes(got.buffer()), bytes(expected.buffer()), "what is valid");
    Frame all = Frame.allocate(2 * W, 2 * H, Frame.Chroma.NV21);
    Bitmaps.pack(image, null, 0, all);
    same(bytes(all.buffer()), bytes(
        CameraFrames.pack(planes[0], planes[1], planes[2], 2 * W, 2 * H)), "all of an image");
    Image jpeg = image(256, planes[0]);
    check(thrown(() -> Bitmaps.pack(jpeg, all)).equals("java.lang.IllegalArgumentException: "
        + "src has the format 256, but must be YUV_420_888"), "another format");
    check(thrown(() -> Bitmaps.pack(null, all)).endsWith("NullPointerException: src is null"), "no image");
    for (Runnable call : new Runnable[] {
      () -> Bitmaps.pack(image, null, 90, null), () -> Bitmaps.pack(image, all),
      () -> Bitmaps.pack(image, new Rect(8, 8, 6, 6), 0, all)
    }) {
      check(thrown(call).matches("java.lang.(NullPointer|IllegalArgument)Exception: .*"), thrown(call));
    }
  }

  public static void main(String[] args) {
    for (Operation operation : OPERATIONS) {
      asImages(operation);
      refusesBadBitmaps(operation);
    }
    failsWhileLocked();
    makesBitmaps();
    packs();
    finish();
  }
}
