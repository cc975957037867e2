#include "sfb/beauty_engine.h"

#include <android/log.h>

#include <cstddef>
#include <mutex>

#include "platform/dynamic_loader.h"

namespace alg {

SfbTenths sfbTenths;

namespace {

constexpr char kTag[] = "DOC_SFB";
constexpr char kFactory[] = "VfbEngineCreate";
constexpr char kNoEngine[] = "VfbEngineCreate gave no engine";

constexpr SfbLevels kDefaultLevels{1, 60, 60, 30};
constexpr uint8_t kStrongest = 100;
constexpr int kCreateArgument = 8;
constexpr int kProcessArgument = -1;

/// Held while the engine library is called: one thread at a time.
std::mutex engineMutex;
VfbEngineCreate* pSfbEngineCreate = nullptr;  // null until the library is loaded

/// Whether the factory is available; loads the library on the first call, and after each failure.
bool loadFactory() {
  if (pSfbEngineCreate != nullptr) {
    return true;
  }
  __android_log_print(ANDROID_LOG_ERROR, kTag, "Loading SFBEngine library ... ");
  if (void* const library = loadLibrary(kSfbLibrary)) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "Loading function ... ");
    pSfbEngineCreate = reinterpret_cast<VfbEngineCreate*>(findSymbol(library, kFactory));
  }
  if (pSfbEngineCreate == nullptr) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "%s", loaderError());
    __android_log_print(ANDROID_LOG_ERROR, kTag, "loadSFBFunc failed...");
  }
  return pSfbEngineCreate != nullptr;
}

/// Configures the engine. Only the low 8 bits of a level fit.
void configure(SfbEngine* engine, const SfbLevels& levels) {
  SfbLevelBlock block{};
  block.smooth = static_cast<uint8_t>(levels.smooth);
  block.toning = static_cast<uint8_t>(levels.toning);
  block.slimming = static_cast<uint8_t>(levels.slimming);
  const SfbConfiguration configuration{block.smooth, block.toning, kStrongest, kStrongest, 1,
                                       &block};
  __android_log_print(ANDROID_LOG_ERROR, kTag,
                      "SetConfiguration s %d, t %d, l %d, sl %d, sc %d, ee %d, ec %d", block.smooth,
                      block.toning, block.slimming, configuration.sl, configuration.sc, block.ee,
                      block.ec);
  engine->operations->setConfiguration(engine, &configuration);
  __android_log_print(ANDROID_LOG_ERROR, kTag, "SetConfiguration finished");
}

int runEngine(SfbEngine* engine, GtImage* image, const SfbLevels& levels) {
  configure(engine, levels);
  const int result = engine->operations->process(engine, kProcessArgument, image, 0, 0);
  __android_log_print(ANDROID_LOG_ERROR, kTag, "Process %d", result);
  return result;
}

/// What a call of the engine library returns; kSfbThrew when it throws: it may run out of memory.
template <class Call>
int resultOf(Call call) {
  try {
    return call();
  } catch (...) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "The engine threw an exception");
    return kSfbThrew;
  }
}

/// Has an engine of the factory's process the image.
SfbRun process(VfbEngineCreate* create, GtImage* image, const SfbLevels& levels) {
  SfbEngine* engine = nullptr;
  const int error = resultOf([&] {
    return create(static_cast<int>(image->width), static_cast<int>(image->height), image->format,
                  kCreateArgument, &engine);
  });
  if (error != 0) {
    return {error};
  }
  if (engine == nullptr) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "%s", kNoEngine);
    return {kSfbNotLoaded, kNoEngine};
  }
  const int result = resultOf(
      [&] { return runEngine(engine, image, levels.mode == 1 ? kDefaultLevels : levels); });
  engine->operations->release(engine);
  return {result};
}

}  // namespace

SfbLevels sfbLevels(int smooth, int toning, int slimming) {
  const SfbLevels& standard = kDefaultLevels;
  int mode = 2;
  if (smooth == 0 && toning == 0 && slimming == 0) {
    mode = 0;
  } else if (smooth == standard.smooth && toning == standard.toning &&
             slimming == standard.slimming) {
    mode = 1;
  }
  return {mode, smooth, toning, slimming};
}

void vfb_init_gtimage(GtImage* image, uint32_t format, int width, int height, int pitch,
                      int planeRows, uint8_t* data) {
  *image = {};
  image->format = format;
  image->width = static_cast<uint32_t>(width);
  image->height = static_cast<uint32_t>(height);
  image->plane[0] = {static_cast<uint32_t>(pitch), 0, data};
  if (format == kGtTwoPlanes) {
    image->plane[1] = {static_cast<uint32_t>(pitch), 0, data + std::ptrdiff_t{pitch} * planeRows};
  } else if (format == kGtThreePlanes) {
    const auto chromaPitch = static_cast<uint32_t>(width / 2);
    const std::ptrdiff_t lumaBytes = std::ptrdiff_t{width} * height;
    image->plane[1] = {chromaPitch, 0, data + lumaBytes};
    image->plane[2] = {chromaPitch, 0, data + lumaBytes + lumaBytes / 4};
  } else {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "GT_FMT_UNKNOWN in init");
  }
}

int SFBProcess(GtImage* image, const SfbLevels* levels) {
  if (levels == nullptr || levels->mode == 0) {
    return 0;
  }
  const std::lock_guard lock(engineMutex);
  if (levels->mode == 2) {
    sfbTenths = {levels->smooth / 10, levels->toning / 10, levels->slimming / 10};
  }
  __android_log_print(ANDROID_LOG_ERROR, kTag, "mode:%d, slimming:%d, smooth:%d, toning:%d",
                      levels->mode, levels->slimming, levels->smooth, levels->toning);
  if (!loadFactory()) {
    return kSfbNotLoaded;
  }
  return process(pSfbEngineCreate, image, *levels).result;
}

SfbRun processWithEngineOfHost(const char* path, GtImage* image, const SfbLevels& levels) {
  if (levels.mode == 0) {
    return {};
  }
  const std::lock_guard lock(engineMutex);
  void* const library = loadLibraryOfHost(path);
  void* const factory = library != nullptr ? findSymbol(library, kFactory) : nullptr;
  if (factory == nullptr) {
    return {kSfbNotLoaded, loaderError()};
  }
  return process(reinterpret_cast<VfbEngineCreate*>(factory), image, levels);
}

}  // namespace alg
