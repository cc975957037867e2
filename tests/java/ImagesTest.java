import com.orvik.camera.common.Native.CameraFrames;
import com.orvik.camera.common.Native.CameraFrames.Plane;
import com.orvik.camera.common.Native.Cancellation;
import com.orvik.camera.common.Native.CodecDataAlgorithm;
import com.orvik.camera.common.Native.Effect;
import com.orvik.camera.common.Native.EffectAlgorithm;
import com.orvik.camera.common.Native.EffectSettings;
import com.orvik.camera.common.Native.Frame;
import com.orvik.camera.common.Native.Images;
import com.orvik.camera.common.Native.Images.Crop;
import com.orvik.camera.common.Native.Pixels;
import com.orvik.camera.common.Native.Pixels.Order;
import com.orvik.camera.common.Native.YUVAlgorithm;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.FileChannel;
import java.nio.channels.WritableByteChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/** Images in any layout against the natives and against themselves in packed rows, and all bad input. */
final class ImagesTest extends Harness {
  private static final int[][] SIZES = {{1, 1}, {3, 2}, {17, 9}, {61, 40}, {257, 190}};

  /** Random pixels with `padding` bytes between rows, which stay as they are. */
  private static Pixels pixels(int w, int h, int padding, Order order) {
    int stride = 4 * w + padding;
    return new Pixels(direct(random(stride * (h - 1) + 4 * w)), w, h, stride, order);
  }

  /** The pixels as B, G, R, A without padding. */
  private static byte[] bgra(Pixels image) {
    byte[] packed = new byte[4 * image.width() * image.height()];
    for (int i = 0; i < packed.length; i++) {
      int k = i % 4 == 1 || i % 4 == 3 || image.order() == Order.BGRA ? i % 4 : 2 - i % 4;
      int pixel = i / 4;
      packed[i] = image.buffer().get(pixel / image.width() * image.rowStride() + pixel % image.width() * 4 + k);
    }
    return packed;
  }

  private static Pixels packed(Pixels image) {
    return Pixels.of(direct(bgra(image)), image.width(), image.height(), Order.BGRA);
  }

  private static byte[] padding(Pixels image) {
    byte[] all = bytes(image.buffer());
    for (int i = 0; i < all.length; i++) {
      all[i] = i % image.rowStride() < 4 * image.width() ? 0 : all[i];
    }
    return all;
  }

  private static EffectSettings withPictures(Effect effect) {
    EffectSettings settings = EffectSettings.DEFAULT;
    for (Effect.Picture picture : effect.pictures()) {
      settings = settings.picture(picture.role(), pixels(23, 19, 8, Order.RGBA));
    }
    return settings;
  }

  private static void effects() {
    check(Effect.values().length == 34, "there are 34 effects");
    for (Effect effect : Effect.values()) {
      EffectSettings settings = withPictures(effect);
      for (int[] size : SIZES) {
        String what = effect + " on " + size[0] + "x" + size[1];
        Pixels src = pixels(size[0], size[1], 7, Order.RGBA);
        Pixels expected = packed(src);
        byte[] before = bgra(src);
        Images.apply(effect, expected, expected, settings);
        Pixels dst = pixels(size[0], size[1], 12, Order.BGRA);
        byte[] between = padding(dst);
        Images.apply(effect, src, dst, settings);
        same(bgra(dst), bgra(expected), what);
        same(padding(dst), between, what + ", padding");
        same(bgra(src), before, what + ", source");
        Images.apply(effect, src, src, settings.amount(0));
        same(bgra(src), before, what + ", nothing of it");
        Images.apply(effect, src, src, settings);
        same(bgra(src), bgra(expected), what + " in place");
      }
    }
    Pixels half = pixels(64, 48, 0, Order.BGRA);
    byte[] from = bgra(half);
    Pixels whole = packed(half);
    Images.apply(Effect.NEGATIVE, whole);
    Images.apply(Effect.NEGATIVE, half, half, EffectSettings.DEFAULT.amount(0.5));
    byte[] to = bgra(whole);
    for (int i = 0; i < from.length; i++) {
      to[i] = (byte) (((from[i] & 255) + (to[i] & 255) + 1) / 2);
    }
    same(bgra(half), to, "half of an effect");
  }

  private static Frame frame(int w, int h, Frame.Chroma chroma, int padding) {
    int stride = w + padding;
    int offset = stride * h + padding / 2;
    return new Frame(direct(random(offset + stride * (h / 2 - 1) + w)), w, h, chroma, stride, offset, stride);
  }

  private static byte[] packed(Frame frame) {
    byte[] all = new byte[CameraFrames.bytes(frame.width(), frame.height())];
    for (int i = 0; i < all.length; i++) {
      int row = i / frame.width();
      int start = row < frame.height() ? row * frame.rowStride()
          : frame.chromaOffset() + (row - frame.height()) * frame.chromaRowStride();
      all[i] = frame.buffer().get(start + i % frame.width());
    }
    return all;
  }

  private static void frames() {
    for (int i = 0; i < 24; i++) {
      int w = 2 + 62 * (i % 3), h = 2 + 30 * (i % 2);
      boolean nv21 = i % 4 < 2;
      Frame frame = frame(w, h, nv21 ? Frame.Chroma.NV21 : Frame.Chroma.NV12, i / 12 * 6);
      ByteBuffer plain = direct(packed(frame));
      Pixels image = pixels(w, h, i % 8, i % 2 == 0 ? Order.RGBA : Order.BGRA);
      Images.decode(frame, image);
      same(bgra(image), bytes(nv21 ? YUVAlgorithm.YVU2ARGB(plain, w, h) : YUVAlgorithm.YUV2ARGB(plain, w, h)),
          "decoded " + i);
      image.buffer().put(0, (byte) 77);
      ByteBuffer argb = direct(bgra(image));
      Images.encode(image, frame);
      same(packed(frame), bytes(nv21 ? YUVAlgorithm.ARGB2YVU(argb, w, h) : YUVAlgorithm.ARGB2YUV(argb, w, h)),
          "encoded " + i);
      for (int degrees = 90; degrees < 360; degrees += 90) {
        int tw = degrees == 180 ? w : h, th = degrees == 180 ? h : w;
        Frame turned = frame(tw, th, frame.chroma(), 4);
        ByteBuffer expected = direct(random(CameraFrames.bytes(w, h)));
        YUVAlgorithm.rotateYUV(direct(packed(frame)), expected, tw, th, 360 - degrees);
        Images.rotate(frame, degrees, turned);
        same(packed(turned), bytes(expected), "turned " + i + " by " + degrees);
        Frame other = frame(tw, th, frame.chroma(), 0);
        int chroma = frame.chromaOffset();
        ByteBuffer first = frame.buffer().slice(chroma, frame.buffer().capacity() - chroma);
        Plane even = new Plane(first, frame.chromaRowStride(), 2);
        Plane odd = new Plane(first.slice(1, first.capacity() - 1), frame.chromaRowStride(), 2);
        Images.pack(new Plane(frame.buffer(), frame.rowStride(), 1), nv21 ? odd : even, nv21 ? even : odd,
            w, h, null, degrees, other);
        same(packed(other), bytes(expected), "packed " + i + " by " + degrees);
      }
    }
    Effect[] onPipeline = {Effect.PRETTY_SWEET, Effect.PRETTY_BLUE, Effect.PRETTY_WHITE_DEW};
    String[] names = {"PrettySweet", "PrettyBlue", "PrettyWhiteDew"};
    for (int i = 0; i < 3; i++) {
      Frame frame = frame(66, 42, Frame.Chroma.NV21, 2 * i);
      ByteBuffer plain = direct(packed(frame));
      EffectAlgorithm.Effect(plain, 66, 42, names[i]);
      Images.apply(onPipeline[i], frame, EffectSettings.DEFAULT);
      same(packed(frame), bytes(plain), names[i] + " on a frame");
    }
    for (Effect effect : Effect.values()) {
      EffectSettings settings = withPictures(effect);
      Frame frame = frame(66, 42, Frame.Chroma.NV12, 6);
      Frame expected = Frame.of(direct(packed(frame)), 66, 42, Frame.Chroma.NV12);
      Pixels image = pixels(66, 42, 0, Order.BGRA);
      Images.decode(expected, image);
      Images.apply(effect, image, image, settings);
      Images.encode(image, expected);
      Images.apply(effect, frame, settings);
      same(packed(frame), packed(expected), effect + " on an NV12 frame");
    }
    Frame cropped = frame(4, 2, Frame.Chroma.NV12, 0);
    ByteBuffer y = direct(random(80)), u = direct(random(20)), v = direct(random(20));
    Images.pack(new Plane(y, 10, 1), new Plane(u, 5, 1), new Plane(v, 5, 1), 10, 8, new Crop(2, 4, 4, 2), 0, cropped);
    byte[] expected = {y.get(42), y.get(43), y.get(44), y.get(45), y.get(52), y.get(53), y.get(54), y.get(55),
        u.get(11), v.get(11), u.get(12), v.get(12)};
    same(packed(cropped), expected, "a crop");
  }

  private interface Blend {
    void run(Pixels src, Pixels dst);
  }

  private interface Bytes {
    int of(int src, int dst, int third);
  }

  private static int background(int a, int b, int c) {
    return Math.abs(b - a) < Math.abs(c - a) ? b : c;
  }

  private static int farthest(int a, int b, int c) {
    int back = background(a, b, c);
    int da = Math.abs(a - back), db = Math.abs(b - back), dc = Math.abs(c - back);
    return da >= db && da >= dc ? a : db >= dc ? b : c;
  }

  private static void blend(String what, Blend blend, Bytes formula, Pixels third) {
    Pixels src = pixels(300, 120, 4, Order.RGBA);
    Pixels dst = pixels(300, 120, 3, Order.BGRA);
    byte[] a = bgra(src), b = bgra(dst), c = bgra(third);
    blend.run(src, dst);
    for (int i = 0; i < a.length; i++) {
      b[i] = (byte) formula.of(a[i] & 255, b[i] & 255, c[i] & 255);
    }
    same(bgra(dst), b, what);
  }

  private static void blends() {
    Pixels third = pixels(300, 120, 1, Order.RGBA);
    blend("mix", (s, d) -> Images.mix(s, d, 100), (s, d, t) -> (d * 156 + s * 100) / 256, third);
    blend("lighten", Images::lighten, (s, d, t) -> Math.max(s, d), third);
    blend("darken", Images::darken, (s, d, t) -> Math.min(s, d), third);
    blend("background", (s, d) -> Images.background(s, third, third, d), (s, d, t) -> t, third);
    blend("background of itself", (s, d) -> Images.background(s, packed(s), third, d),
        (s, d, t) -> background(s, s, t), third);
    blend("farthest", (s, d) -> Images.farthest(s, third, d), (s, d, t) -> farthest(d, s, t), third);
    blend("paste", (s, d) -> Images.paste(s, d, new Crop(0, 0, 300, 120)), (s, d, t) -> s, third);
    Pixels image = pixels(70, 40, 4, Order.RGBA), blurred = pixels(70, 40, 0, Order.RGBA);
    Pixels expected = packed(image);
    Images.blur(image, blurred);
    Images.apply(Effect.BLUR, expected);
    same(bgra(blurred), bgra(expected), "blurred");
    Images.activeBlur(image, image);
    Pixels small = pixels(9, 21, 5, Order.RGBA), straight = pixels(9, 21, 0, Order.BGRA);
    Images.resize(image, small);
    Images.resize(packed(image), straight);
    same(bgra(small), bgra(straight), "resized");
  }

  private static void jpeg() throws IOException {
    int w = 301, h = 203;
    Pixels photo = pixels(w, h, 9, Order.RGBA);
    for (int i = 0; i < photo.buffer().capacity(); i++) {
      photo.buffer().put(i, (byte) (i % photo.rowStride() / 9 + i / photo.rowStride()));
    }
    byte[] file = CodecDataAlgorithm.ARGB2JPEG(direct(bgra(photo)), w, h, 88);
    ByteBuffer out = direct(new byte[file.length]);
    check(Images.encodeJpeg(photo, 88, out) == file.length, "size of a file");
    same(bytes(out), file, "encoded");
    check(Images.jpegSize(out).toString().equals("301x203"), "size of an image");
    int[] size = new int[2];
    byte[] decoded = bytes(CodecDataAlgorithm.JPEG2ARGB(out, size));
    for (int reduction = 1; reduction <= 8; reduction *= 2) {
      Images.Size part = Images.jpegSize(out).reducedBy(reduction);
      Pixels image = pixels(part.width(), part.height(), 5, Order.RGBA);
      byte[] between = padding(image);
      check(Images.decodeJpeg(out, image, reduction).equals(part), "size at 1/" + reduction);
      same(padding(image), between, "padding at 1/" + reduction);
      if (reduction == 1) {
        same(bgra(image), decoded, "decoded");
      }
    }
    refuses("dst has " + (file.length - 1) + " bytes, but the file takes " + file.length,
        () -> Images.encodeJpeg(photo, 88, direct(new byte[file.length - 1])));
    for (Effect effect : Effect.values()) {
      for (double amount : new double[] {1, 0.3}) {
        EffectSettings settings = withPictures(effect).amount(amount);
        Pixels image = pixels(w, h, 0, Order.BGRA);
        Images.decodeJpeg(out, image, 1);
        Images.apply(effect, image, image, settings);
        byte[] expected = CodecDataAlgorithm.ARGB2JPEG(image.buffer(), w, h, 70);
        ByteBuffer result = direct(new byte[expected.length]);
        check(Images.applyToJpeg(effect, settings, out, 70, result) == expected.length, effect + " to a JPEG");
        same(bytes(result), expected, effect + " to a JPEG");
      }
    }
    Path source = Files.createTempFile("images", ".jpg"), target = Files.createTempFile("images", ".jpg");
    Files.write(source, file);
    ByteBuffer expected = direct(new byte[2 * file.length]);
    int bytes = Images.applyToJpeg(Effect.SEPIA, EffectSettings.DEFAULT, out, 60, expected);
    try (FileChannel in = FileChannel.open(source);
        FileChannel to = FileChannel.open(target, StandardOpenOption.WRITE)) {
      Images.applyToJpeg(Effect.SEPIA, EffectSettings.DEFAULT, in, to, 60);
      same(Files.readAllBytes(target), bytes(expected.slice(0, bytes)), "from file to file");
      in.position(0);
      IOException full = new IOException("disk full");
      WritableByteChannel broken = new WritableByteChannel() {
        @Override
        public int write(ByteBuffer from) throws IOException {
          throw full;
        }

        @Override
        public boolean isOpen() {
          return true;
        }

        @Override
        public void close() {}
      };
      try {
        Images.applyToJpeg(Effect.SEPIA, EffectSettings.DEFAULT, in, broken, 60);
        check(false, "a broken channel");
      } catch (IOException e) {
        check(e == full, "the channel's own exception");
      }
      refuses("in has 0 bytes, but must have from 1 to 2147483647",
          () -> toNowhere(in, Channels.newChannel(System.err)));
    } finally {
      Files.delete(source);
      Files.delete(target);
    }
  }

  private static void toNowhere(FileChannel in, WritableByteChannel to) {
    try {
      Images.applyToJpeg(Effect.SEPIA, EffectSettings.DEFAULT, in, to, 60);
    } catch (IOException e) {
      check(false, "throws " + e);
    }
  }

  private static void cancellation() {
    Cancellation cancellation = new Cancellation();
    EffectSettings settings = EffectSettings.DEFAULT.cancelledBy(cancellation);
    Pixels image = pixels(400, 300, 0, Order.RGBA);
    Images.apply(Effect.NEGATIVE, image, image, settings);
    cancellation.cancel();
    check(cancellation.isCancelled(), "is cancelled");
    byte[] before = bytes(image.buffer());
    Frame frame = frame(64, 64, Frame.Chroma.NV21, 0);
    Runnable[] calls = {
      () -> Images.apply(Effect.NEGATIVE, image, image, settings),
      () -> Images.apply(Effect.FISH_EYE, image, image, settings),
      () -> Images.apply(Effect.PRETTY_SWEET, frame, settings)
    };
    for (Runnable call : calls) {
      check(thrown(call).startsWith("java.util.concurrent.CancellationException"), "a cancelled call goes on");
      same(bytes(image.buffer()), before, "cancelled before it began");
    }
  }

  private static void refusals() {
    ByteBuffer memory = direct(random(64 * 64 * 4));
    byte[] content = bytes(memory);
    int max = Integer.MAX_VALUE;
    Pixels image = Pixels.of(memory, 16, 16, Order.BGRA);
    Pixels readOnly = Pixels.of(memory.asReadOnlyBuffer(), 16, 16, Order.BGRA);
    Pixels shifted = Pixels.of(memory.slice(40, 1024), 16, 16, Order.BGRA);
    Pixels other = Pixels.of(memory.slice(2048, 1024), 16, 16, Order.RGBA);
    Pixels small = Pixels.of(memory.slice(4096, 1020), 15, 17, Order.RGBA);
    Frame frame = Frame.of(memory.slice(8192, 384), 16, 16, Frame.Chroma.NV21);
    Frame shared = Frame.of(memory.slice(1000, 384), 16, 16, Frame.Chroma.NV21);
    Frame onSource = Frame.of(memory.slice(8200, 384), 16, 16, Frame.Chroma.NV12);
    Plane plane = new Plane(memory.slice(0, 256), 16, 1), quarter = new Plane(memory.slice(0, 64), 8, 1);
    EffectSettings plain = EffectSettings.DEFAULT;

    refuses("buffer is null", () -> Pixels.of(null, 4, 4, Order.RGBA));
    refuses("order is null", () -> Pixels.of(memory, 4, 4, null));
    refuses("buffer is a heap buffer, but must be direct", () -> Pixels.of(ByteBuffer.allocate(64), 4, 4, Order.RGBA));
    refuses("width is 0, but must be at least 1", () -> Pixels.of(memory, 0, 4, Order.RGBA));
    refuses("height is -1, but must be at least 1", () -> new Pixels(memory, 4, -1, 16, Order.RGBA));
    refuses("rowStride is 15, but 4 pixels take 16 bytes", () -> new Pixels(memory, 4, 4, 15, Order.RGBA));
    refuses("rowStride is -5, but 4 pixels take 16 bytes", () -> new Pixels(memory, 4, 4, -5, Order.RGBA));
    refuses("rowStride is 2147483647, but 2147483647 pixels take 8589934588 bytes",
        () -> new Pixels(memory, max, max, max, Order.RGBA));
    refuses("buffer has 16384 bytes, but 64x65 pixels with a row stride of 256 take 16640",
        () -> Pixels.of(memory, 64, 65, Order.RGBA));
    refuses("buffer has 16384 bytes, but 1x2147483647 pixels with a row stride of 2147483647 take 4611686011984936966",
        () -> new Pixels(memory, 1, max, max, Order.RGBA));
    refuses("65536x65536 pixels take more than 2147483647 bytes", () -> Pixels.allocate(65536, 65536, Order.RGBA));
    refuses("width is 3, but must be even", () -> Frame.of(memory, 3, 4, Frame.Chroma.NV21));
    refuses("height is 1, but must be at least 2", () -> Frame.of(memory, 4, 1, Frame.Chroma.NV21));
    refuses("rowStride is 3, but 4 luma samples take 4 bytes",
        () -> new Frame(memory, 4, 4, Frame.Chroma.NV21, 3, 16, 4));
    refuses("chromaOffset is 15, but the luma ends at 16",
        () -> new Frame(memory, 4, 4, Frame.Chroma.NV21, 4, 15, 4));
    refuses("chromaRowStride is 2, but 2 chroma pairs take 4 bytes",
        () -> new Frame(memory, 4, 4, Frame.Chroma.NV21, 4, 16, 2));
    refuses("buffer has 16384 bytes, but 4x4 pixels with their chroma at 2147483647 take 2147483655",
        () -> new Frame(memory, 4, 4, Frame.Chroma.NV21, 4, max, 4));

    refuses("effect is null", () -> Images.apply(null, image));
    refuses("src is null", () -> Images.apply(Effect.SEPIA, null, image, plain));
    refuses("dst is null", () -> Images.apply(Effect.SEPIA, image, null, plain));
    refuses("settings is null", () -> Images.apply(Effect.SEPIA, image, image, null));
    refuses("dst is read-only, but is to be written", () -> Images.apply(Effect.SEPIA, image, readOnly, plain));
    refuses("dst has 15x17 pixels, but 16x16 are needed", () -> Images.apply(Effect.SEPIA, image, small, plain));
    refuses("dst and src share 984 bytes of memory, but must share none",
        () -> Images.apply(Effect.SEPIA, image, shifted, plain));
    for (double amount : new double[] {-0.001, 1.5, Double.NaN, Double.POSITIVE_INFINITY}) {
      refuses("amount is " + amount + ", but must be from 0 to 1", () -> plain.amount(amount));
    }
    refuses("radius is NaN, but must be finite", () -> plain.parameter("radius", Double.NaN));
    refuses("radius is 3, but must be from 0.3 to 2",
        () -> Images.apply(Effect.FILL_LIGHT, image, image, plain.parameter("radius", 3)));
    refuses("offset is 0.5, but must be a whole number",
        () -> Images.apply(Effect.MINIATURE_ROWS, image, image, plain.parameter("offset", 0.5)));
    refuses("settings have the parameter offset, which SEPIA has not",
        () -> Images.apply(Effect.SEPIA, image, image, plain.parameter("offset", 1)));
    refuses("the parameters of miniature-rows do not go with 16x16 pixels: the ramp ends before them",
        () -> Images.apply(Effect.MINIATURE_ROWS, image, image, plain.parameter("ramp", 5)));
    refuses("settings have the picture paper, which SEPIA has not",
        () -> Images.apply(Effect.SEPIA, image, image, plain.picture("paper", other)));
    refuses("settings have a picture, but SEPIA takes none",
        () -> Images.apply(Effect.SEPIA, image, image, plain.picture(other)));
    refuses("settings have no picture overlay, but PRETTY_PINK needs one",
        () -> Images.apply(Effect.PRETTY_PINK, image));
    refuses("mask has 16x16 pixels, but must be as large as front, which has 15x17",
        () -> Images.apply(Effect.AREA, image, image, plain.picture(small).picture("mask", other)));
    refuses("dst and overlay share 984 bytes of memory, but must share none",
        () -> Images.apply(Effect.PRETTY_PINK, image, image, plain.picture(shifted)));
    refuses("settings have no picture overlay, and the device has none that can be used",
        () -> Images.apply(Effect.PRETTY_PINK, frame, plain));
    refuses("overlay has 3 rows, but must have at least 4",
        () -> Images.apply(Effect.PRETTY_PINK, frame, plain.picture(Pixels.of(memory, 1, 3, Order.RGBA))));
    refuses("settings have no picture overlay, but PRETTY_PINK needs one",
        () -> Images.apply(Effect.PRETTY_PINK, frame, plain.amount(0.5)));

    refuses("dst and src share 360 bytes of memory, but must share none", () -> Images.decode(shared, image2(memory)));
    refuses("dst has 15x17 pixels, but 16x16 are needed", () -> Images.decode(frame, small));
    refuses("dst has 16x16 pixels, but 15x17 are needed", () -> Images.encode(small, frame));
    refuses("dst and src share 360 bytes of memory, but must share none", () -> Images.encode(image2(memory), shared));
    refuses("u is a heap buffer, but must be direct", () -> Images.pack(plane,
        new Plane(ByteBuffer.allocate(64), 8, 1), quarter, 16, 16, null, 0, frame));
    refuses("v has 63 bytes, but 8x8 samples with strides of 8 and 1 take 64", () -> Images.pack(plane, quarter,
        new Plane(memory.slice(0, 63), 8, 1), 16, 16, null, 0, frame));
    refuses("y.rowStride is 8, but 16 samples with a pixel stride of 1 take 16 bytes",
        () -> Images.pack(quarter, quarter, quarter, 16, 16, null, 0, frame));
    refuses("crop.left is 1, but must be even",
        () -> Images.pack(plane, quarter, quarter, 16, 16, new Crop(1, 0, 2, 2), 0, frame));
    refuses("crop is 16x16 pixels at (2, 0), but the image has 16x16",
        () -> Images.pack(plane, quarter, quarter, 16, 16, new Crop(2, 0, 16, 16), 0, frame));
    refuses("crop is 2147483647x1 pixels at (2147483647, 0), but the image has 16x16",
        () -> Images.pack(plane, quarter, quarter, 16, 16, new Crop(max, 0, max, 1), 0, frame));
    refuses("degrees is 45, but must be 0, 90, 180 or 270",
        () -> Images.pack(plane, quarter, quarter, 16, 16, null, 45, frame));
    refuses("dst has 16x16 pixels, but 2x4 are needed",
        () -> Images.pack(plane, quarter, quarter, 16, 16, new Crop(0, 0, 4, 2), 90, frame));
    refuses("dst and y share 256 bytes of memory, but must share none", () -> Images.pack(plane, quarter, quarter, 16, 16,
        null, 0, Frame.of(memory, 16, 16, Frame.Chroma.NV12)));
    refuses("degrees is 0, but must be 90, 180 or 270", () -> Images.rotate(image, 0, other));
    refuses("dst has 15x17 pixels, but 16x16 are needed", () -> Images.rotate(image, 90, small));
    refuses("dst and src share 984 bytes of memory, but must share none", () -> Images.rotate(image, 90, shifted));
    refuses("dst and src share 376 bytes of memory, but must share none", () -> Images.rotate(frame, 180, onSource));
    refuses("dst and src share 984 bytes of memory, but must share none", () -> Images.resize(image, shifted));
    refuses("weight is 257, but must be from 0 to 256", () -> Images.mix(image, other, 257));
    refuses("dst and src share 984 bytes of memory, but must share none", () -> Images.mix(image, shifted, 1));
    refuses("third has 15x17 pixels, but 16x16 are needed", () -> Images.background(image, other, small, image));
    refuses("dst and second share 1024 bytes of memory, but must share none",
        () -> Images.background(image, other, image, other));
    refuses("area is 10x10 pixels at (7, 0), but the image has 16x16",
        () -> Images.paste(image, other, new Crop(7, 0, 10, 10)));

    refuses("file is null", () -> Images.jpegSize(null));
    refuses("file is a heap buffer, but must be direct", () -> Images.jpegSize(ByteBuffer.allocate(9)));
    refuses("file is no JPEG", () -> Images.jpegSize(memory));
    refuses("file is no JPEG", () -> Images.jpegSize(ByteBuffer.allocateDirect(0)));
    refuses("file is no JPEG", () -> Images.decodeJpeg(memory.slice(2000, 20), image, 1));
    refuses("reduction is 3, but must be 1, 2, 4 or 8", () -> Images.decodeJpeg(memory, image, 3));
    refuses("dst and file share 1024 bytes of memory, but must share none", () -> Images.decodeJpeg(memory, image, 1));
    refuses("quality is 101, but must be from 0 to 100", () -> Images.encodeJpeg(image, 101, memory));
    refuses("dst is read-only, but is to be written",
        () -> Images.encodeJpeg(image, 50, memory.asReadOnlyBuffer()));
    refuses("dst and src share 1024 bytes of memory, but must share none", () -> Images.encodeJpeg(image, 50, memory));
    refuses("file is no JPEG", () -> Images.applyToJpeg(Effect.SEPIA, plain, memory.slice(0, 9), 5, memory.slice(9, 9)));
    same(bytes(memory), content, "memory after refusals");
  }

  /** An image that ends inside the memory of `shared` in refusals(). */
  private static Pixels image2(ByteBuffer memory) {
    return Pixels.of(memory.slice(336, 1024), 16, 16, Order.BGRA);
  }

  public static void main(String[] args) throws IOException {
    takeLog();
    effects();
    frames();
    blends();
    cancellation();
    takeLog();
    refusals();
    check(takeLog().lines().noneMatch(line -> !line.startsWith("Defog|")), "nothing is logged");
    jpeg();
    finish();
  }
}
