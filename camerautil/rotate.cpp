// Rotation by quarter turns. Both families use the same walk over a grid of elements; they differ
// in what their sizes mean and in the direction of a turn.
#include <cstddef>

#include "base/image_size.h"
#include "base/streamed.h"
#include "camerautil/turn_rows.h"
#include "catalogue/operations.h"
#include "libalgorithm/camera_util.h"

namespace {

using alg::Rows;

enum class Turn { kCounterClockwise, kHalf, kClockwise };

template <class Byte>
Rows<Byte> upwards(Rows<Byte> rows, int height) {
  return {rows.row(height - 1), -rows.pitch};
}

/// Fills a width x height destination of elements; each moves whole. A quarter turn is a transpose
/// that reads or writes its rows from the last to the first:
///
///   source   1 2 3   transposed  1 4   destination upwards  3 6   source upwards  4 1
///            4 5 6               2 5   (counterclockwise)   2 5   (clockwise)     5 2
///                                3 6                        1 4                   6 3
void rotate(Turn turn, std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
            int width, int height, bool stream) {
  switch (turn) {
    case Turn::kCounterClockwise:
      return alg::transpose(elementBytes, src, upwards(dst, height), height, width, stream);
    case Turn::kClockwise:
      return alg::transpose(elementBytes, upwards(src, width), dst, height, width, stream);
    case Turn::kHalf:
      const auto columns = static_cast<std::size_t>(width);
      const auto rowBytes = static_cast<std::ptrdiff_t>(elementBytes * columns);
      if (src.pitch == rowBytes && dst.pitch == rowBytes) {  // all rows are one
        return alg::mirror(elementBytes, src.first, dst.first,
                           columns * static_cast<std::size_t>(height), stream);
      }
      for (int y = 0; y < height; ++y) {
        alg::mirror(elementBytes, src.row(height - 1 - y), dst.row(y), columns, stream);
      }
  }
}

void rotateFrame(Turn turn, const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const std::ptrdiff_t dstPitch = width;
  const std::ptrdiff_t srcPitch = turn == Turn::kHalf ? width : height;
  const std::ptrdiff_t lumaBytes = dstPitch * height;
  const bool stream = alg::isStreamed(dst, static_cast<std::size_t>(lumaBytes + lumaBytes / 2));
  rotate(turn, 1, {src, srcPitch}, {dst, dstPitch}, width, height, stream);
  rotate(turn, 2, {src + lumaBytes, srcPitch}, {dst + lumaBytes, dstPitch}, width / 2, height / 2,
         stream);
}

void rotateImage(Turn turn, const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  constexpr std::ptrdiff_t kBytes = alg::kArgbBytes;
  const int dstWidth = turn == Turn::kHalf ? width : height;
  const int dstHeight = turn == Turn::kHalf ? height : width;
  const bool stream = alg::isStreamed(dst, kBytes * alg::pixelCount(width, height));
  rotate(turn, kBytes, {src, kBytes * width}, {dst, kBytes * dstWidth}, dstWidth, dstHeight,
         stream);
}

}  // namespace

void CameraUtil::rotateYUV90(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kCounterClockwise, src, dst, width, height);
}

void CameraUtil::rotateYUV180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kHalf, src, dst, width, height);
}

void CameraUtil::rotateYUV270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateFrame(Turn::kClockwise, src, dst, width, height);
}

void CameraUtil::rotateYUV(const uint8_t* src, uint8_t* dst, int width, int height, int degrees) {
  switch (degrees) {
    case 180:
      return rotateYUV180(src, dst, width, height);
    case 270:
      return rotateYUV270(src, dst, width, height);
    case 90:
      return rotateYUV90(src, dst, width, height);
    default:
      return;
  }
}

void CameraUtil::rotateARGB90(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage(Turn::kClockwise, src, dst, width, height);
}

void CameraUtil::rotateARGB180(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage(Turn::kHalf, src, dst, width, height);
}

void CameraUtil::rotateARGB270(const uint8_t* src, uint8_t* dst, int width, int height) {
  rotateImage(Turn::kCounterClockwise, src, dst, width, height);
}

void CameraUtil::rotateARGB(const uint8_t* src, uint8_t* dst, int width, int height, int degrees) {
  switch (degrees) {
    case 180:
      return rotateARGB180(src, dst, width, height);
    case 270:
      return rotateARGB270(src, dst, width, height);
    case 90:
      return rotateARGB90(src, dst, width, height);
    default:
      return;
  }
}

namespace alg::operation {
namespace {

/// Sizes of a frame's turn are those of the result.
template <auto kTurn>
void runFrameTurn(const Call& call) {
  kTurn(call.src, call.dst, call.resultWidth, call.resultHeight);
}

template <auto kTurn>
void runImageTurn(const Call& call) {
  kTurn(call.src, call.dst, call.width, call.height);
}

}  // namespace

constinit const Operation kRotateYuv90{
    .name = "rotate-yuv-90",
    .routine = "CameraUtil::rotateYUV90",
    .family = Family::kGeometry,
    .shows = "A quarter turn counter-clockwise.",
    .formula = "Luma bytes and chroma pairs are moved as they are.",
    .pixels = Pixels::kFrame,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kTurned,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runFrameTurn<CameraUtil::rotateYUV90>,
};

constinit const Operation kRotateYuv180{
    .name = "rotate-yuv-180",
    .routine = "CameraUtil::rotateYUV180",
    .family = Family::kGeometry,
    .shows = "Half a turn.",
    .formula = "Luma bytes and chroma pairs are moved as they are.",
    .pixels = Pixels::kFrame,
    .reach = Reach::kAnything,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runFrameTurn<CameraUtil::rotateYUV180>,
};

constinit const Operation kRotateYuv270{
    .name = "rotate-yuv-270",
    .routine = "CameraUtil::rotateYUV270",
    .family = Family::kGeometry,
    .shows = "A quarter turn clockwise.",
    .formula = "Luma bytes and chroma pairs are moved as they are.",
    .pixels = Pixels::kFrame,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kTurned,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runFrameTurn<CameraUtil::rotateYUV270>,
};

constexpr Parameter kRotateYuvParameters[] = {{.name = "degrees",
                                               .type = Parameter::Type::kInteger,
                                               .least = 90,
                                               .most = 270,
                                               .preset = 90,
                                               .step = 90,
                                               .help = "counter-clockwise"}};

constinit const Operation kRotateYuv{
    .name = "rotate-yuv",
    .routine = "CameraUtil::rotateYUV",
    .family = Family::kGeometry,
    .shows = "Quarter turns of a frame.",
    .formula = "Luma bytes and chroma pairs are moved as they are.",
    .pixels = Pixels::kFrame,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kByDegrees,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .parameters = kRotateYuvParameters,
    .run =
        [](const Call& call) {
          CameraUtil::rotateYUV(call.src, call.dst, call.resultWidth, call.resultHeight,
                                call.integer(0));
        },
};

constinit const Operation kRotateArgb90{
    .name = "rotate-argb-90",
    .routine = "CameraUtil::rotateARGB90",
    .family = Family::kGeometry,
    .shows = "A quarter turn clockwise.",
    .formula = "Pixels are moved as they are.",
    .pixels = Pixels::kWords,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kTurned,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runImageTurn<CameraUtil::rotateARGB90>,
};

constinit const Operation kRotateArgb180{
    .name = "rotate-argb-180",
    .routine = "CameraUtil::rotateARGB180",
    .family = Family::kGeometry,
    .shows = "Half a turn.",
    .formula = "Pixels are moved as they are.",
    .pixels = Pixels::kWords,
    .reach = Reach::kAnything,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runImageTurn<CameraUtil::rotateARGB180>,
};

constinit const Operation kRotateArgb270{
    .name = "rotate-argb-270",
    .routine = "CameraUtil::rotateARGB270",
    .family = Family::kGeometry,
    .shows = "A quarter turn counter-clockwise.",
    .formula = "Pixels are moved as they are.",
    .pixels = Pixels::kWords,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kTurned,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .run = runImageTurn<CameraUtil::rotateARGB270>,
};

constexpr Parameter kRotateArgbParameters[] = {{.name = "degrees",
                                                .type = Parameter::Type::kInteger,
                                                .least = 90,
                                                .most = 270,
                                                .preset = 90,
                                                .step = 90,
                                                .help = "clockwise"}};

constinit const Operation kRotateArgb{
    .name = "rotate-argb",
    .routine = "CameraUtil::rotateARGB",
    .family = Family::kGeometry,
    .shows = "Quarter turns of an image.",
    .formula = "Pixels are moved as they are.",
    .pixels = Pixels::kWords,
    .reach = Reach::kAnything,
    .resultSize = ResultSize::kByDegrees,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .parameters = kRotateArgbParameters,
    .pipeline = {.name = "rotate_effect", .identifier = 16, .strips = 1},
    .run =
        [](const Call& call) {
          CameraUtil::rotateARGB(call.src, call.dst, call.width, call.height, call.integer(0));
        },
};

}  // namespace alg::operation
