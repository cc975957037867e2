package com.orvik.camera.common.Native;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.Buffer;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.channels.IllegalBlockingModeException;
import java.nio.channels.WritableByteChannel;
import java.util.function.IntConsumer;

/** Files from channels and to channels, for natives that know memory only. */
final class Channels {
  private static final int CHUNK = 64 * 1024;

  private Channels() {}

  /**
   * All bytes from the channel's position on. Read, not mapped: a mapped file that someone shortens
   * ends the process.
   */
  static ByteBuffer readAll(FileChannel in) throws IOException {
    long bytes = in.size() - in.position();
    Checks.require(bytes >= 1 && bytes <= Integer.MAX_VALUE,
        "in has " + bytes + " bytes, but must have from 1 to " + Integer.MAX_VALUE);
    ByteBuffer file = ByteBuffer.allocateDirect((int) bytes);
    while (file.hasRemaining() && in.read(file) >= 0) {
      // A file that has just been shortened is short, which the decoder finds out.
    }
    return file;
  }

  /**
   * Writes to a channel what a native leaves in a buffer. Natives find the method by its interface,
   * which a shrinker doesn't rename.
   */
  static final class Sink implements IntConsumer {
    private final WritableByteChannel out;
    private final ByteBuffer buffer = ByteBuffer.allocateDirect(CHUNK);

    Sink(WritableByteChannel out) {
      this.out = out;
    }

    ByteBuffer buffer() {
      return buffer;
    }

    @Override
    public void accept(int bytes) {
      ByteBuffer part = buffer.duplicate();
      ((Buffer) part).limit(bytes);
      try {
        while (part.hasRemaining()) {
          if (out.write(part) < 1) {
            throw new IllegalBlockingModeException(); // would be asked again and again
          }
        }
      } catch (IOException e) {
        throw new UncheckedIOException(e);
      }
    }

    /** Runs the native; what the channel throws comes out as it was. */
    void during(Runnable work) throws IOException {
      try {
        work.run();
      } catch (UncheckedIOException e) {
        throw e.getCause();
      }
    }
  }
}
