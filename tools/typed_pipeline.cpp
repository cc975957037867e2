#include "tools/typed_pipeline.h"

#include <cstddef>

#include "base/image_size.h"
#include "effect/pipeline.h"
#include "effect/strip_split.h"
#include "libalgorithm/yuv_convert.h"
#include "platform/large_block.h"

namespace alg {
namespace {

/// The band of a picture that strip `index` of `count` gets.
PictureView bandOf(const PictureView& picture, int index, int count) {
  const std::size_t bytes = pixelCount(picture.width, picture.height) * kArgbBytes;
  const std::size_t start = bytes / static_cast<std::size_t>(count);
  return {picture.pixels + static_cast<std::size_t>(index) * start, picture.width,
          picture.height / count};
}

}  // namespace

Outcome runEffect(const Operation& operation, const Frame& frame, const PictureView* picture) {
  if (picture == nullptr) {
    return runEffect(operation.pipeline.name, frame) ? Outcome::kDone : Outcome::kNoMemory;
  }
  if (picture->height < operation.pipeline.strips) {
    return Outcome::kNoPicture;
  }
  const Block rows = allocateLargeBlock(pixelCount(frame.width, frame.height) * kPackedBytes);
  if (!rows) {
    return Outcome::kNoMemory;
  }
  for (int i = 0; i < kStrips; ++i) {
    const YuvStripDesc yuv = yuvStrip(frame, stripOf(frame.height, kStrips, i));
    decodeYUV2ARGB_jni(rows.get(), yuv.y, yuv.uv, yuv.width, yuv.rows, yuv.yStride, yuv.uvStride);
    Call call;
    call.src = call.dst = rows.get();
    call.width = yuv.width;
    call.height = yuv.rows;
    call.pictures[0] = bandOf(*picture, i, operation.pipeline.strips);
    operation.run(call);
    decodeARGB2YUV_jni(rows.get(), yuv.y, yuv.uv, yuv.width, yuv.rows, yuv.yStride, yuv.uvStride);
  }
  return Outcome::kDone;
}

}  // namespace alg
