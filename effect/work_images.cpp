#include "effect/work_images.h"

#include <cstdlib>
#include <limits>

#include "base/image_size.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"

uint8_t* gCLAHE_Rgb_Buffer_in = nullptr;
uint8_t* gCLAHE_Rgb_Buffer_out = nullptr;

namespace alg {

WorkImages::WorkImages(int width, int height)
    : fit_(int64_t{kPackedBytes} * width * height <= std::numeric_limits<int32_t>::max()) {
  fastcvPollInit(width, height);
}

WorkImages::~WorkImages() { fastcvPollDestory(); }

bool WorkImages::ready() const {
  return fit_ && gCLAHE_Rgb_Buffer_in != nullptr && gCLAHE_Rgb_Buffer_out != nullptr;
}

}  // namespace alg

int fastcvPollInit(int width, int height) {
  const auto bytes = static_cast<std::size_t>(std::ptrdiff_t{width * height * alg::kPackedBytes});
  gCLAHE_Rgb_Buffer_in = static_cast<uint8_t*>(std::malloc(bytes));
  gCLAHE_Rgb_Buffer_out = static_cast<uint8_t*>(std::malloc(bytes));
  HALThreadPoolInit();
  return 0;
}

void fastcvPollDestory() {
  for (uint8_t** buffer : {&gCLAHE_Rgb_Buffer_in, &gCLAHE_Rgb_Buffer_out}) {
    std::free(*buffer);
    *buffer = nullptr;
  }
}
