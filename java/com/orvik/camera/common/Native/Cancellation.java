package com.orvik.camera.common.Native;

import java.nio.ByteBuffer;

/**
 * Asks a long call of {@link Images} to stop, from another thread. The call then throws {@link
 * java.util.concurrent.CancellationException} as soon as the rows at which it is are done; what it
 * has written by then stays. One object may serve many calls, and stays cancelled once it is.
 *
 * <p>Any thread may call its methods at any time.
 */
public final class Cancellation {
  // Where native threads see it, which can't read Java's fields.
  private final ByteBuffer flag = ByteBuffer.allocateDirect(1);
  private volatile boolean cancelled;

  /** Nothing is cancelled yet. */
  public Cancellation() {}

  /** Stops the calls that it was given to, and all that it will be given to. */
  public void cancel() {
    cancelled = true;
    flag.put(0, (byte) 1);
  }

  /**
   * Whether {@link #cancel} has been called.
   *
   * @return true from then on
   */
  public boolean isCancelled() {
    return cancelled;
  }

  /** One byte, not 0 when cancelled. */
  ByteBuffer flag() {
    return flag;
  }
}
