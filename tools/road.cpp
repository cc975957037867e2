#include "tools/road.h"

#include <mutex>
#include <new>

#include "base/image_size.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/yuv_convert.h"
#include "platform/large_block.h"
#include "threadpool/global_pool.h"
#include "tools/device_root.h"

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

void applyEffect(const EffectTableEntry& effect, Photo& photo) {
  throughFrame(photo, [&](const Frame& frame) {
    if (!runEffect(effect.name, frame)) {
      throw std::bad_alloc();  // what decodes also fits the road's limits
    }
  });

  // The road says nothing about a picture it can't get; the lookup does. Both decode it into the
  // library's own picture.
  const std::lock_guard lock(poolMutex());
  if (effect.changesFrame() &&
      effectTypeInit(effect.name, photo.width, photo.height).effectId != effect.effectId) {
    throw missingPicture(
        effect.name, photo.width > photo.height ? effect.landscapePicture : effect.portraitPicture);
  }
}

}  // namespace alg::tool
