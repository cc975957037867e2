#include "tools/effects/photo_pipeline.h"

#include <new>

#include "base/image_size.h"
#include "libalgorithm/yuv_convert.h"
#include "platform/large_block.h"

namespace alg::tool {

void throughFrame(Photo& photo, const std::function<void(const Frame&)>& work) {
  const int width = photo.width;
  const int height = photo.height;
  uint32_t* pixels = wordsOf(photo);
  const Block bytes = allocateLargeBlock(static_cast<std::size_t>(yuvFrameBytes(width, height)));
  if (!bytes) {
    throw std::bad_alloc();
  }
  uint8_t* chroma = bytes.get() + pixelCount(width, height);
  const Frame frame{bytes.get(), chroma, width, height, width, width};

  decodeARGB2YVU_OpenGL(pixels, frame.y, frame.uv, width, height, width, width);
  work(frame);
  decodeYVU2ARGB_OpenGL(pixels, frame.y, frame.uv, width, height, width, width);
}

}  // namespace alg::tool
