/**
 * Image routines of the camera application, written in native code that works on raw memory.
 *
 * <p>Four classes have native methods for applications; loading one of them loads {@code
 * libAlgorithm.so} from the library path. What follows holds for each of these methods. {@link
 * com.orvik.camera.common.Native.CameraFrames}, plain Java, packs a camera's planes into the frames
 * they take, and checks buffers before a call, throwing exceptions.
 *
 * <p>{@link com.orvik.camera.common.Native.Images} is for everything new: the same work and all
 * other effects on the caller's own buffers, with row strides, both orders of bytes and exceptions.
 * Its description says what holds for it; this page does not.
 *
 * <h2>Buffers</h2>
 *
 * <p>Every {@link java.nio.ByteBuffer} must be <b>direct</b> ({@link
 * java.nio.ByteBuffer#allocateDirect}). An image starts at index 0 of its buffer and rows follow
 * each other without gaps; position, limit and byte order of the buffer are ignored. Sizes are
 * checked against its capacity, which may be larger than needed. To start elsewhere, pass a {@link
 * java.nio.ByteBuffer#slice()}. A method that changes a buffer also changes the memory behind a
 * read-only view.
 *
 * <p>A method with a result returns a new direct buffer or array. <b>The memory of a returned
 * buffer is never freed</b>: it stays valid for the life of the process, even when nothing refers
 * to the buffer any more. Convert single pictures this way, not every frame of a preview.
 *
 * <h2>Layouts</h2>
 *
 * <p><b>ARGB image</b>, 4 &times; width &times; height bytes. A pixel is the 32-bit word
 * {@code 0xAARRGGBB} in little-endian order:
 *
 * <pre>
 *   index    0   1   2   3     4   5   6   7
 *          +---+---+---+---+ +---+---+---+---+
 *          | B | G | R | A | | B | G | R | A |  ...
 *          +---+---+---+---+ +---+---+---+---+
 *               pixel 0           pixel 1
 * </pre>
 *
 * <p>Producers set A to 255; consumers ignore it. New Java buffers are big-endian: call {@code
 * order(ByteOrder.LITTLE_ENDIAN)} before {@code asIntBuffer()} to read such words.
 *
 * <p><b>YUV frame</b>, 3 &times; width &times; height / 2 bytes: one luma byte for each pixel, then
 * one pair of chroma bytes for each block of 2 &times; 2 pixels. There are two orders within a
 * pair. A frame of 4 &times; 2 pixels, 12 bytes:
 *
 * <pre>
 *   index    0    1    2    3         index    8    9   10   11
 *          +----+----+----+----+             +----+----+----+----+
 *          | Y0 | Y1 | Y2 | Y3 |    "YUV"    | U0 | V0 | U1 | V1 |  NV12
 *          +----+----+----+----+             +----+----+----+----+
 *          | Y4 | Y5 | Y6 | Y7 |    "YVU"    | V0 | U0 | V1 | U1 |  NV21
 *          +----+----+----+----+             +----+----+----+----+
 *   index    4    5    6    7       U0 V0: pixels 0 1 4 5    U1 V1: pixels 2 3 6 7
 * </pre>
 *
 * <p>Video range: luma 16 to 235, chroma 16 to 240 around 128.
 *
 * <h2>Bad input</h2>
 *
 * <p>A null or heap buffer, a buffer too small for the sizes given, a size below 1 or so large that
 * the image would pass {@link Integer#MAX_VALUE} bytes, a null name, a null or short array: the
 * method writes <b>one error line to the log</b> (priority ERROR, the class's name as tag) and
 * returns null or leaves the frame untouched. No native method throws an exception, and none
 * reads or writes outside its buffers. Each method also logs a line on entry (ending in " E") and on exit
 * (" X").
 *
 * <h2>Threads</h2>
 *
 * <p>All methods may be called on any thread and return when the work is done. A buffer must not be
 * written by anyone else during a call. Each class says which of its calls may overlap.
 */
package com.orvik.camera.common.Native;
