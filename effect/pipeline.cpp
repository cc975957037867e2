#include "effect/pipeline.h"

#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>

#include "base/image_size.h"
#include "effect/strip_split.h"
#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/thread_pool.h"
#include "libalgorithm/yuv_convert.h"

uint8_t* gCLAHE_Rgb_Buffer_in = nullptr;
uint8_t* gCLAHE_Rgb_Buffer_out = nullptr;

namespace alg {
namespace {

constexpr int kConvertStrips = 4;
constexpr int kMaxStrips = 4;

YuvStripDesc yuvStrip(const Frame& frame, const Strip& strip) {
  return {frame.y + std::ptrdiff_t{strip.firstRow} * frame.yStride,
          frame.uv + std::ptrdiff_t{strip.firstRow / 2} * frame.uvStride,
          frame.width,
          strip.rows,
          frame.yStride,
          frame.uvStride};
}

RgbStripDesc rgbStrip(const Frame& frame, uint8_t* workImage, const Strip& strip) {
  RgbStripDesc desc{};
  desc.pixels = workImage + std::size_t{kPackedBytes} * static_cast<std::size_t>(frame.width) *
                                static_cast<std::size_t>(strip.firstRow);
  desc.width = frame.width;
  desc.rows = strip.rows;
  desc.yStride = frame.yStride;
  desc.uvStride = frame.uvStride;
  desc.channels = kPackedBytes;
  return desc;
}

/// Gives strip `index` its band of the overlay: equal bands of whole rows, whatever the frame's
/// cut.
void addEffect(RgbStripDesc& desc, const EffectTypeInfo& effect, int index) {
  const auto width = static_cast<uint32_t>(effect.overlayWidth);
  const auto height = static_cast<uint32_t>(effect.overlayHeight);
  const auto count = static_cast<uint32_t>(effect.stripCount);
  desc.effectId = effect.effectId;
  desc.effectFlag = effect.effectFlag;
  desc.overlay = effect.overlay + static_cast<uint32_t>(index) * (width * height * 4 / count);
  desc.overlayWidth = effect.overlayWidth;
  desc.overlayRows = static_cast<int32_t>(height / count);
}

/// Lets one run at a time in: the work images, the picture and the pool are single instances. At
/// the end of the process it waits for the run under way, which still reads the picture; recursive,
/// because the pool may end the process from within a run.
struct RunLock {
  std::recursive_mutex mutex;
  RunLock() = default;
  ~RunLock() { mutex.lock(); }
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;
};

bool workImagesFit(const Frame& frame) {
  return int64_t{kPackedBytes} * frame.width * frame.height <= std::numeric_limits<int32_t>::max();
}

/// The three phases, each a job of its own on the pool. The workers live until the work images are
/// gone.
void runPhases(const char* effectName, const Frame& frame) {
  tagT_ThreadPoolTaskInput records[kMaxStrips] = {};
  YuvStripDesc yuv[kConvertStrips];
  RgbStripDesc in[kMaxStrips];
  RgbStripDesc out[kMaxStrips];
  StripRange ranges[kMaxStrips] = {};

  for (int i = 0; i < kConvertStrips; ++i) {
    const Strip strip = stripOf(frame.height, kConvertStrips, i);
    yuv[i] = yuvStrip(frame, strip);
    in[i] = rgbStrip(frame, gCLAHE_Rgb_Buffer_in, strip);
    records[i].input = &yuv[i];
    records[i].output = &in[i];
  }
  ThreadPoolWorker decoding(g_threadpool, kConvertStrips, YUV2RGB, records);
  decoding.Work();

  const EffectTypeInfo effect = effectTypeInit(effectName, frame.width, frame.height);
  for (int i = 0; i < effect.stripCount; ++i) {
    const Strip strip = stripOf(frame.height, effect.stripCount, i);
    in[i] = rgbStrip(frame, gCLAHE_Rgb_Buffer_in, strip);
    addEffect(in[i], effect, i);
    out[i] = rgbStrip(frame, gCLAHE_Rgb_Buffer_out, strip);
    ranges[i].firstRow = strip.firstRow;
    ranges[i].imageHeight = frame.height;
    records[i] = {&in[i], &out[i], &ranges[i]};
  }
  ThreadPoolWorker effecting(g_threadpool, effect.stripCount, EffectFunction, records);
  effecting.Work();

  for (int i = 0; i < kConvertStrips; ++i) {
    const Strip strip = stripOf(frame.height, kConvertStrips, i);
    out[i] = rgbStrip(frame, gCLAHE_Rgb_Buffer_out, strip);
    records[i].input = &out[i];
    records[i].output = &yuv[i];
  }
  ThreadPoolWorker encoding(g_threadpool, kConvertStrips, RGB2YUV, records);
  encoding.Work();

  fastcvPollDestory();
}

}  // namespace

bool runEffect(const char* effectName, const Frame& frame) {
  if (frame.width < 1 || frame.height < 1) {
    return true;
  }
  if (!workImagesFit(frame)) {
    return false;
  }
  static RunLock runLock;
  const std::lock_guard lock(runLock.mutex);
  try {
    fastcvPollInit(frame.width, frame.height);
    if (gCLAHE_Rgb_Buffer_in != nullptr && gCLAHE_Rgb_Buffer_out != nullptr &&
        g_hal_threadpool_init != 0) {
      runPhases(effectName, frame);
      return true;
    }
  } catch (const std::bad_alloc&) {
    // Thrown before a phase has queued anything, and the last phase alone writes the frame.
  }
  fastcvPollDestory();
  return false;
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

void KAVRO_PrettyEffect_Function(const char* effectName, const char* /*format*/, uint8_t* y,
                                 uint8_t* uv, int height, int width, int yStride, int uvStride) {
  alg::runEffect(effectName, {y, uv, width, height, yStride, uvStride});
}
